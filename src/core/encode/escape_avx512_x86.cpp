// Escaping on AVX-512 VBMI2. Sixteen bytes are widened to 32 bits each, as the byte itself or as
// mark and two digits, and one compress instruction closes the gaps: the cost does not depend on
// how many bytes need an escape. Runs that need none are copied 64 bytes at a time.

#include "core/encode/escape_kernels.h"

#if defined(ZT_X86_64)

#include "core/avx512_x86.h"
#include "core/encode/hex.h"

namespace zantrel::escape {
namespace {

using avx512::between;
using avx512::loadSome;
using avx512::lowBits;

constexpr std::uint64_t kLaneStarts = 0x1111'1111'1111'1111;
constexpr std::size_t kWorthCopying = 16;
// Quoted-printable lines full of escapes hold few bytes; the table does them faster.
constexpr int kWorthVectors = 40;

struct Sixteen {
  __m512i forms;         // four bytes of room for each
  std::uint64_t wanted;  // which of these bytes belong to the output
};

// `plain` says which of the 16 bytes stand for themselves.
ZT_TARGET_AVX512 inline Sixteen escapeSixteen(__m128i bytes, std::uint64_t plain,
                                              char mark) noexcept {
  const __m512i digits =
      _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(kHexDigits)));
  const __m512i wide = _mm512_cvtepu8_epi32(bytes);
  const __m512i high = _mm512_slli_epi32(_mm512_srli_epi32(wide, 4), 8);
  const __m512i low = _mm512_slli_epi32(_mm512_and_si512(wide, _mm512_set1_epi32(15)), 16);
  const __m512i text = _mm512_shuffle_epi8(digits, _mm512_or_si512(high, low));
  const __m512i escaped = _mm512_mask_blend_epi8(kLaneStarts, text, _mm512_set1_epi8(mark));
  const auto plainLanes = static_cast<__mmask16>(plain);
  const std::uint64_t escapedStarts = _pdep_u64(~plain, kLaneStarts);
  return {_mm512_mask_blend_epi32(plainLanes, escaped, wide), kLaneStarts | escapedStarts * 6};
}

// Where the first CRLF of the block starts, of which `next` holds the bytes one further.
ZT_TARGET_AVX512 inline std::size_t blockLineBreak(__m512i text, __m512i next) noexcept {
  const __mmask64 breaks = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('\r')) &
                           _mm512_cmpeq_epi8_mask(next, _mm512_set1_epi8('\n'));
  return static_cast<std::size_t>(_tzcnt_u64(breaks));
}

}  // namespace

ZT_TARGET_AVX512 Progress quotedPrintableLineAvx512(const std::uint8_t* in, std::size_t size,
                                                    std::size_t room, char* out) noexcept {
  Progress done;
  while (done.consumed < size && done.produced < room) {
    const std::uint8_t* const p = in + done.consumed;
    char* const to = out + done.produced;
    const std::size_t left = size - done.consumed;
    const __m512i text = loadSome(p, left);
    const __m512i next = loadSome(p + 1, left - 1);
    const std::size_t lineEnd = blockLineBreak(text, next);
    const std::size_t usable = left < lineEnd ? left : lineEnd;
    if (usable == 0) break;
    const std::uint64_t plain =
        (between(text, ' ', '~') & _mm512_cmpneq_epi8_mask(text, _mm512_set1_epi8('='))) |
        _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('\t'));
    std::size_t run = static_cast<std::size_t>(_tzcnt_u64(~plain));
    if (run >= kWorthCopying) {
      const std::size_t columns = room - done.produced;
      run = run < usable ? run : usable;
      run = run < columns ? run : columns;
      _mm512_storeu_si512(to, text);
      done.consumed += run;
      done.produced += run;
      continue;
    }
    if (_mm_popcnt_u64(plain) < kWorthVectors) break;
    Sixteen block = escapeSixteen(_mm512_castsi512_si128(text), plain & 0xFFFF, '=');
    std::size_t count = usable < 16 ? usable : 16;
    block.wanted &= lowBits(count * 4);
    const std::size_t columns = room - done.produced;
    if (static_cast<std::size_t>(_mm_popcnt_u64(block.wanted)) > columns) {
      // The byte in whose form the last free column lies is the last of this line.
      const std::uint64_t last = _pdep_u64(std::uint64_t{1} << (columns - 1), block.wanted);
      count = static_cast<std::size_t>(_tzcnt_u64(last)) / 4 + 1;
      block.wanted &= lowBits(count * 4);
    }
    _mm512_storeu_si512(to, _mm512_maskz_compress_epi8(block.wanted, block.forms));
    done.consumed += count;
    done.produced += static_cast<std::size_t>(_mm_popcnt_u64(block.wanted));
  }
  return done;
}

ZT_TARGET_AVX512 std::size_t urlAvx512(const std::uint8_t* in, std::size_t size,
                                       char* out) noexcept {
  const char* const start = out;
  const __m512i blank = _mm512_set1_epi8(' ');
  for (std::size_t i = 0; i < size;) {
    const __m512i text = loadSome(in + i, size - i);
    const __m512i lower = _mm512_or_si512(text, _mm512_set1_epi8(0x20));
    const __mmask64 blanks = _mm512_cmpeq_epi8_mask(text, blank);
    const std::uint64_t plain = between(lower, 'a', 'z') | between(text, '0', '9') | blanks;
    const __m512i forms = _mm512_mask_blend_epi8(blanks, text, _mm512_set1_epi8('+'));
    const std::size_t left = size - i;
    const auto run = static_cast<std::size_t>(_tzcnt_u64(~plain));
    if (run >= kWorthCopying) {
      _mm512_storeu_si512(out, forms);
      i += run;  // what lies behind the input is not plain
      out += run;
      continue;
    }
    const std::size_t count = left < 16 ? left : 16;
    const Sixteen block = escapeSixteen(_mm512_castsi512_si128(forms), plain & 0xFFFF, '%');
    const std::uint64_t wanted = block.wanted & lowBits(count * 4);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(wanted, block.forms));
    i += count;
    out += _mm_popcnt_u64(wanted);
  }
  return static_cast<std::size_t>(out - start);
}

}  // namespace zantrel::escape

#endif

// Escaping with AVX2: runs of bytes that stand for themselves are found and copied 32 bytes at a
// time; escapes between them are written and read singly.

#include "core/encode/escape_kernels.h"

#if defined(ZT_X86_64)

#include "core/encode/hex.h"
#include "platform/x86_intrinsics.h"

namespace zantrel::escape {
namespace {

// Where fewer of 32 bytes are plain, the caller's table is faster.
constexpr int kWorthVectors = 20;

ZT_TARGET_AVX2 inline __m256i equal(__m256i text, char c) noexcept {
  return _mm256_cmpeq_epi8(text, _mm256_set1_epi8(c));
}

// Which of 32 bytes stand for themselves inside a quoted-printable line.
ZT_TARGET_AVX2 inline std::uint32_t plainBytes(__m256i text) noexcept {
  // As signed bytes, all beyond ASCII are below the blank.
  const __m256i printing = _mm256_andnot_si256(_mm256_or_si256(equal(text, '='), equal(text, 127)),
                                               _mm256_cmpgt_epi8(text, _mm256_set1_epi8(' ' - 1)));
  const __m256i plain = _mm256_or_si256(printing, equal(text, '\t'));
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(plain));
}

}  // namespace

ZT_TARGET_AVX2 Progress quotedPrintableLineAvx2(const std::uint8_t* in, std::size_t size,
                                                std::size_t room, char* out) noexcept {
  Progress done;
  while (size - done.consumed > 32 && done.produced < room) {
    const std::uint8_t* p = in + done.consumed;
    char* to = out + done.produced;
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const std::uint32_t plain = plainBytes(text);
    if (_mm_popcnt_u32(plain) < kWorthVectors) break;
    const std::size_t columns = room - done.produced;
    const std::size_t plainRun = _tzcnt_u32(~plain);
    const std::size_t run = plainRun < columns ? plainRun : columns;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), text);
    done.consumed += run;
    done.produced += run;
    if (run == 32 || run == columns) continue;
    p += run;
    to += run;
    if (p[0] == '\r' && p[1] == '\n') break;
    to[0] = '=';
    to[1] = kHexDigits[*p >> 4];
    to[2] = kHexDigits[*p & 15];
    ++done.consumed;
    done.produced += 3;
  }
  return done;
}

ZT_TARGET_AVX2 std::size_t urlRunAvx2(const char* in, std::size_t size,
                                      std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; size - i >= 32; i += 32) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    const __m256i bytes = _mm256_blendv_epi8(text, _mm256_set1_epi8(' '), equal(text, '+'));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), bytes);
    const auto escapes = static_cast<std::uint32_t>(_mm256_movemask_epi8(equal(text, '%')));
    if (escapes != 0) return i + _tzcnt_u32(escapes);
  }
  for (; i < size && in[i] != '%'; ++i)
    out[i] = in[i] == '+' ? std::uint8_t{' '} : static_cast<std::uint8_t>(in[i]);
  return i;
}

}  // namespace zantrel::escape

#endif

// UTF-8 and UTF-16 with AVX-512 (F, BW, VBMI2): 64 bytes or 32 units a step.
//
// From UTF-8: every byte is classified into masks. The positions that yield a unit are the first
// byte of every character and, for the low surrogate, the third byte of a character of four. The
// byte at such a position and its two successors are gathered by three byte compressions, so that
// one 16-bit lane holds all that its unit is made of, and the unit is a shift-and-add that depends
// on the class of the first byte only. The step is always 64 bytes: characters may straddle blocks,
// since the successors come from loads at one and two bytes further on, and the continuation bytes
// that a block still owes are a mask carried to the next one. Well-formedness is the equality of
// the expected and the actual continuation mask plus range checks on the finished units (an
// overlong form or a surrogate shows as a unit out of range). Where the kernel stops behind half a
// character it steps back to that character's first byte.
//
// From UTF-16: each unit becomes a 32-bit lane (16-bit for text below U+0800) holding its bytes,
// and one byte compression closes the gaps.

#include "core/charset/utf8_utf16_kernels.h"

#ifdef ZT_X86_64

#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 takes the deliberately undefined registers in its own header for a mistake.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#else
#include <immintrin.h>
#endif

#include <algorithm>
#include <bit>

namespace zantrel {
namespace {

using Mask64 = std::uint64_t;

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLookahead = 2;  // bytes behind a block that its last characters need
constexpr std::size_t kHalf = 32;      // units in a register

/// The lowest `count` bits; count may be 64 or more.
ZT_TARGET_AVX512 inline Mask64 lowBits(std::size_t count) noexcept {
  return count >= 64 ? ~Mask64{0} : (Mask64{1} << count) - 1;
}

ZT_TARGET_AVX512 inline __m512i words(int value) noexcept {
  return _mm512_set1_epi16(static_cast<short>(value));
}

ZT_TARGET_AVX512 inline __m512i splat(std::uint32_t value) noexcept {
  return _mm512_set1_epi32(static_cast<int>(value));
}

/// A block of UTF-8 as three registers: the bytes, their successors, and the successors of those.
struct Block {
  __m512i at;
  __m512i next;
  __m512i afterNext;
};

/// The first 64 of `rest` bytes, zeros behind them.
ZT_TARGET_AVX512 inline __m512i loadPart(const std::uint8_t* bytes, std::size_t rest) noexcept {
  return _mm512_maskz_loadu_epi8(lowBits(rest), bytes);
}

ZT_TARGET_AVX512 inline Block loadBlock(const std::uint8_t* bytes, std::size_t rest) noexcept {
  if (rest >= kBlockBytes + kLookahead)
    return {_mm512_loadu_si512(bytes), _mm512_loadu_si512(bytes + 1),
            _mm512_loadu_si512(bytes + 2)};
  return {loadPart(bytes, rest), loadPart(bytes + 1, rest - 1),
          loadPart(bytes + 2, rest - std::min<std::size_t>(rest, 2))};
}

/// Units of 32 gathered characters; `bad` receives the lanes that are out of their class's range.
ZT_TARGET_AVX512 inline __m512i unitsOf(__m256i first, __m256i second, __m256i third,
                                        bool withPairs, __mmask32& bad) noexcept {
  const __m512i a = _mm512_cvtepu8_epi16(first);
  const __m512i b = _mm512_cvtepu8_epi16(second);
  const __m512i c = _mm512_cvtepu8_epi16(third);
  const __mmask32 isTwo = _mm512_cmpge_epu16_mask(a, words(0xC0));
  const __mmask32 isThree = _mm512_cmpge_epu16_mask(a, words(0xE0));
  // The constants take the marker bits of all bytes away at once, modulo 2^16.
  const __m512i two = _mm512_sub_epi16(_mm512_add_epi16(_mm512_slli_epi16(a, 6), b), words(0x3080));
  const __m512i three = _mm512_sub_epi16(
      _mm512_add_epi16(_mm512_add_epi16(_mm512_slli_epi16(a, 12), _mm512_slli_epi16(b, 6)), c),
      words(0x2080));
  __m512i units = _mm512_mask_mov_epi16(a, isTwo, two);
  units = _mm512_mask_mov_epi16(units, isThree, three);
  const __mmask32 isFour = withPairs ? _mm512_cmpge_epu16_mask(a, words(0xF0)) : 0;
  // Three bytes are right from 0800 on, except for the 2048 surrogates.
  bad = _mm512_mask_cmplt_epu16_mask(isThree & ~isFour, units, words(0x800)) |
        _mm512_mask_cmplt_epu16_mask(isThree & ~isFour, _mm512_sub_epi16(units, words(0xD800)),
                                     words(0x800));
  if (!withPairs) return units;
  const __m512i high = _mm512_sub_epi16(
      _mm512_add_epi16(_mm512_add_epi16(_mm512_slli_epi16(a, 8), _mm512_slli_epi16(b, 2)),
                       _mm512_srli_epi16(c, 4)),
      words(0x1A48));
  const __m512i low =
      _mm512_or_si512(_mm512_and_si512(_mm512_slli_epi16(a, 6), words(0x3C0)),
                      _mm512_or_si512(_mm512_and_si512(b, words(0x3F)), words(0xDC00)));
  const __mmask32 isLow =
      _mm512_mask_cmpge_epu16_mask(static_cast<__mmask32>(~isTwo), a, words(0x80));
  bad |= _mm512_mask_cmpge_epu16_mask(isFour, _mm512_sub_epi16(high, words(0xD800)), words(0x400));
  units = _mm512_mask_mov_epi16(units, isFour, high);
  return _mm512_mask_mov_epi16(units, isLow, low);
}

/// Writes the first `count` of 32 units; a whole register if there is room for one.
ZT_TARGET_AVX512 inline void storeUnits(char16_t* out, std::size_t room, std::size_t count,
                                        __m512i units) noexcept {
  if (room >= kHalf) {
    _mm512_storeu_si512(out, units);
  } else {
    _mm512_mask_storeu_epi16(out, static_cast<__mmask32>(lowBits(count)), units);
  }
}

/// Writes the first `count` of 64 bytes; a whole register if there is room for one.
ZT_TARGET_AVX512 inline void storeBytes(std::uint8_t* out, std::size_t room, std::size_t count,
                                        __m512i bytes) noexcept {
  if (room >= kBlockBytes) {
    _mm512_storeu_si512(out, bytes);
  } else {
    _mm512_mask_storeu_epi8(out, lowBits(count), bytes);
  }
}

/// Takes back a character of which only the first bytes are behind `done`.
KernelProgress withoutHalfCharacter(ByteSpan in, KernelProgress done) noexcept {
  std::size_t back = 1;
  while ((in[done.consumed - back] & 0xC0) == 0x80) ++back;
  done.consumed -= back;
  // A first byte yields one unit at once; of four bytes the third one yields the second.
  done.produced -= in[done.consumed] >= 0xF0 && back > 2 ? 2 : 1;
  return done;
}

}  // namespace

ZT_TARGET_AVX512 KernelProgress utf8ToUtf16Avx512(ByteSpan in, std::span<char16_t> out) noexcept {
  KernelProgress done;
  Mask64 owed = 0;     // continuation bytes that characters of the block before still need
  Mask64 owedLow = 0;  // places of low surrogates among them
  while (done.consumed < in.size()) {
    const std::uint8_t* bytes = in.data() + done.consumed;
    const std::size_t rest = in.size() - done.consumed;
    const std::size_t room = out.size() - done.produced;
    char16_t* units = out.data() + done.produced;
    const Block block = loadBlock(bytes, rest);
    const Mask64 inside = lowBits(rest);
    const Mask64 beyondAscii = _mm512_movepi8_mask(block.at);
    if ((beyondAscii | owed) == 0) {
      const std::size_t count = std::min(rest, kBlockBytes);
      if (room < count) break;
      storeUnits(units, room, count, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block.at)));
      if (count > kHalf)
        storeUnits(units + kHalf, room - kHalf, count - kHalf,
                   _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block.at, 1)));
      done.consumed += count;
      done.produced += count;
      continue;
    }
    const Mask64 first =
        _mm512_cmpge_epu8_mask(block.at, _mm512_set1_epi8(static_cast<char>(0xC0)));
    const Mask64 three =
        _mm512_cmpge_epu8_mask(block.at, _mm512_set1_epi8(static_cast<char>(0xE0)));
    const Mask64 four = _mm512_cmpge_epu8_mask(block.at, _mm512_set1_epi8(static_cast<char>(0xF0)));
    const Mask64 overlong =
        _mm512_mask_cmplt_epu8_mask(first, block.at, _mm512_set1_epi8(static_cast<char>(0xC2)));
    const Mask64 continuations = beyondAscii & ~first;
    const Mask64 expected = owed | (first << 1) | (three << 2) | (four << 3);
    if (((continuations ^ expected) & inside) != 0 || overlong != 0) break;

    const Mask64 yields = (~continuations | owedLow | (four << 2)) & inside;
    const auto count = static_cast<std::size_t>(std::popcount(yields));
    if (room < count) break;
    const bool withPairs = (four | owedLow) != 0;
    const __m512i a = _mm512_maskz_compress_epi8(yields, block.at);
    const __m512i b = _mm512_maskz_compress_epi8(yields, block.next);
    const __m512i c = _mm512_maskz_compress_epi8(yields, block.afterNext);
    __mmask32 bad;
    const __m512i lower = unitsOf(_mm512_castsi512_si256(a), _mm512_castsi512_si256(b),
                                  _mm512_castsi512_si256(c), withPairs, bad);
    const Mask64 owedNext =
        rest < kBlockBytes ? expected >> rest : (first >> 63) | (three >> 62) | (four >> 61);
    // At the end of the input the last character may lack bytes; it is taken back below.
    const bool cutShort = rest < kBlockBytes + kLookahead &&
                          (owedNext >> (std::max(rest, kBlockBytes) - kBlockBytes)) != 0;
    const std::size_t whole = cutShort ? count - 1 : count;
    if ((bad & static_cast<__mmask32>(lowBits(whole))) != 0) break;
    storeUnits(units, room, count, lower);
    if (count > kHalf) {
      const __m512i upper =
          unitsOf(_mm512_extracti64x4_epi64(a, 1), _mm512_extracti64x4_epi64(b, 1),
                  _mm512_extracti64x4_epi64(c, 1), withPairs, bad);
      if ((bad & static_cast<__mmask32>(lowBits(whole - kHalf))) != 0) break;
      storeUnits(units + kHalf, room - kHalf, count - kHalf, upper);
    }
    done.produced += count;
    done.consumed += std::min(rest, kBlockBytes);
    owed = owedNext;
    owedLow = four >> 62;
  }
  return owed != 0 ? withoutHalfCharacter(in, done) : done;
}

ZT_TARGET_AVX512 KernelProgress utf16ToUtf8Avx512(std::span<const char16_t> in,
                                                  std::span<std::uint8_t> out) noexcept {
  KernelProgress done;
  while (done.consumed < in.size()) {
    const char16_t* units = in.data() + done.consumed;
    const std::size_t rest = in.size() - done.consumed;
    const std::size_t room = out.size() - done.produced;
    std::uint8_t* bytes = out.data() + done.produced;
    const std::size_t count = std::min(rest, kHalf);
    const auto inside = static_cast<__mmask32>(lowBits(count));
    const __m512i block =
        count == kHalf ? _mm512_loadu_si512(units) : _mm512_maskz_loadu_epi16(inside, units);
    const __mmask32 beyondAscii = _mm512_cmpge_epu16_mask(block, words(0x80));
    if (beyondAscii == 0) {
      if (room < count) break;
      const __m256i narrow = _mm512_cvtepi16_epi8(block);
      if (room >= kHalf) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), narrow);
      } else {
        _mm256_mask_storeu_epi8(bytes, inside, narrow);
      }
      done.consumed += count;
      done.produced += count;
      continue;
    }
    if (_mm512_cmpge_epu16_mask(block, words(0x800)) == 0) {
      const __m512i pair = _mm512_or_si512(
          _mm512_or_si512(_mm512_srli_epi16(block, 6),
                          _mm512_and_si512(_mm512_slli_epi16(block, 8), words(0x3F00))),
          words(0x80C0));
      const __m512i spread = _mm512_mask_mov_epi16(block, beyondAscii, pair);
      // A first byte counts even when it is zero; a second byte never is.
      const Mask64 firsts = _pdep_u64(inside, 0x5555555555555555u);
      const Mask64 used = _mm512_test_epi8_mask(spread, spread) | firsts;
      const auto length = static_cast<std::size_t>(std::popcount(used));
      if (room < length) break;
      storeBytes(bytes, room, length, _mm512_maskz_compress_epi8(used, spread));
      done.consumed += count;
      done.produced += length;
      continue;
    }
    const std::size_t quarter = std::min<std::size_t>(rest, 16);
    const auto lanes = static_cast<__mmask16>(lowBits(quarter));
    const __m512i u = _mm512_cvtepu16_epi32(_mm512_castsi512_si256(block));
    const __m512i two =
        _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(u, 6),
                                        _mm512_and_si512(_mm512_slli_epi32(u, 8), splat(0x3F00))),
                        splat(0x80C0));
    const __m512i three =
        _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(u, 12),
                                        _mm512_and_si512(_mm512_slli_epi32(u, 2), splat(0x3F00))),
                        _mm512_or_si512(_mm512_and_si512(_mm512_slli_epi32(u, 16), splat(0x3F0000)),
                                        splat(0x8080E0)));
    __m512i spread = _mm512_mask_mov_epi32(u, _mm512_cmpge_epu32_mask(u, splat(0x80)), two);
    spread = _mm512_mask_mov_epi32(spread, _mm512_cmpge_epu32_mask(u, splat(0x800)), three);
    Mask64 firsts = _pdep_u64(lanes, 0x1111111111111111u);
    std::size_t taken = quarter;
    const __m512i kind = _mm512_and_si512(u, splat(0xFC00));
    const __mmask16 high = _mm512_cmpeq_epi32_mask(kind, splat(0xD800));
    const __mmask16 low = _mm512_cmpeq_epi32_mask(kind, splat(0xDC00));
    if ((high | low) != 0) {
      // The unit behind each one; none behind the last of the input.
      const std::size_t behind = std::min<std::size_t>(rest - 1, 16);
      const __m512i partner = _mm512_cvtepu16_epi32(
          _mm256_maskz_loadu_epi16(static_cast<__mmask16>(lowBits(behind)), units + 1));
      const __mmask16 paired = _mm512_mask_cmpeq_epi32_mask(
          high, _mm512_and_si512(partner, splat(0xFC00)), splat(0xDC00));
      // Each high surrogate needs its partner, and each low one the high one in front.
      if (paired != high || low != static_cast<__mmask16>(high << 1)) break;
      const __m512i character =
          _mm512_add_epi32(_mm512_slli_epi32(u, 10), _mm512_sub_epi32(partner, splat(0x35FDC00)));
      const __m512i four = _mm512_or_si512(
          _mm512_or_si512(
              _mm512_or_si512(_mm512_srli_epi32(character, 18),
                              _mm512_and_si512(_mm512_srli_epi32(character, 4), splat(0x3F00))),
              _mm512_or_si512(
                  _mm512_and_si512(_mm512_slli_epi32(character, 10), splat(0x3F0000)),
                  _mm512_and_si512(_mm512_slli_epi32(character, 24), splat(0x3F000000)))),
          splat(0x808080F0));
      spread = _mm512_mask_mov_epi32(spread, high, four);
      spread = _mm512_mask_mov_epi32(spread, low, _mm512_setzero_si512());
      firsts &= ~_pdep_u64(low, 0x1111111111111111u);
      if ((high >> 15) != 0) ++taken;  // its partner stands in the next block
    }
    const Mask64 used = _mm512_test_epi8_mask(spread, spread) | firsts;
    const auto length = static_cast<std::size_t>(std::popcount(used));
    if (room < length) break;
    storeBytes(bytes, room, length, _mm512_maskz_compress_epi8(used, spread));
    done.consumed += taken;
    done.produced += length;
  }
  return done;
}

}  // namespace zantrel

#endif

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
// From UTF-16: each unit is spread into the four bytes of a 32-bit lane (two bytes for text below
// U+0800), half a pair into two of them, and byte compressions close the gaps.

#include "core/charset/utf8_utf16_kernels.h"

#ifdef ZT_X86_64

#include <algorithm>
#include <array>
#include <bit>

#include "core/avx512_x86.h"

namespace zantrel {
namespace {

using avx512::loadSome;
using avx512::lowBits;
using Mask64 = std::uint64_t;

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLookahead = 2;  // bytes behind a block that its last characters need
constexpr std::size_t kHalf = 32;      // units in a register

using Lanes = std::array<std::uint16_t, kHalf>;

/// The lane in front of each; of the first one itself.
alignas(64) constexpr Lanes kBefore = [] {
  Lanes lanes{};
  for (unsigned i = 1; i < kHalf; ++i) lanes[i] = static_cast<std::uint16_t>(i - 1);
  return lanes;
}();

/// Lanes of two registers by turns, from the lower or the upper half of both.
constexpr Lanes interleaved(unsigned first) {
  Lanes lanes{};
  for (unsigned i = 0; i < kHalf; ++i)
    lanes[i] = static_cast<std::uint16_t>(first + i / 2 + i % 2 * kHalf);
  return lanes;
}
alignas(64) constexpr Lanes kInterleaveLower = interleaved(0);
alignas(64) constexpr Lanes kInterleaveUpper = interleaved(kHalf / 2);

ZT_TARGET_AVX512 inline __m512i load(const void* p) noexcept {
  return _mm512_loadu_si512(p);
}

ZT_TARGET_AVX512 inline __m512i load(const Lanes& lanes) noexcept {
  return _mm512_load_si512(lanes.data());
}

ZT_TARGET_AVX512 inline __m512i words(int value) noexcept {
  return _mm512_set1_epi16(static_cast<short>(value));
}

/// A block of UTF-8 as three registers: the bytes, their successors, and the successors of those.
struct Block {
  __m512i at;
  __m512i next;
  __m512i afterNext;
};

ZT_TARGET_AVX512 inline Block loadBlock(const std::uint8_t* bytes, std::size_t rest) noexcept {
  if (rest >= kBlockBytes + kLookahead)
    return {_mm512_loadu_si512(bytes), _mm512_loadu_si512(bytes + 1),
            _mm512_loadu_si512(bytes + 2)};
  return {loadSome(bytes, rest), loadSome(bytes + 1, rest - 1),
          loadSome(bytes + 2, rest - std::min<std::size_t>(rest, 2))};
}

/// Widens whole blocks of ASCII.
ZT_TARGET_AVX512 inline KernelProgress widenBlocks(ByteSpan in, std::span<char16_t> out,
                                                   KernelProgress done) noexcept {
  while (in.size() - done.consumed >= kBlockBytes && out.size() - done.produced >= kBlockBytes) {
    const __m512i block = _mm512_loadu_si512(in.data() + done.consumed);
    if (_mm512_movepi8_mask(block) != 0) break;
    char16_t* const units = out.data() + done.produced;
    _mm512_storeu_si512(units, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block)));
    _mm512_storeu_si512(units + kHalf, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block, 1)));
    done.consumed += kBlockBytes;
    done.produced += kBlockBytes;
  }
  return done;
}

/// Units of 32 gathered characters of one or two bytes.
ZT_TARGET_AVX512 inline __m512i shortUnitsOf(__m256i first, __m256i second) noexcept {
  const __m512i a = _mm512_cvtepu8_epi16(first);
  const __m512i two = _mm512_sub_epi16(
      _mm512_add_epi16(_mm512_slli_epi16(a, 6), _mm512_cvtepu8_epi16(second)), words(0x3080));
  return _mm512_mask_mov_epi16(a, _mm512_cmpge_epu16_mask(a, words(0xC0)), two);
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

/// Narrows whole blocks of ASCII.
ZT_TARGET_AVX512 inline KernelProgress narrowBlocks(std::span<const char16_t> in,
                                                    std::span<std::uint8_t> out,
                                                    KernelProgress done) noexcept {
  const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);  // what packing leaves
  while (in.size() - done.consumed >= 2 * kHalf && out.size() - done.produced >= 2 * kHalf) {
    const __m512i first = load(in.data() + done.consumed);
    const __m512i second = load(in.data() + done.consumed + kHalf);
    if (_mm512_cmpge_epu16_mask(_mm512_or_si512(first, second), words(0x80)) != 0) break;
    const __m512i packed = _mm512_packus_epi16(first, second);
    _mm512_storeu_si512(out.data() + done.produced, _mm512_permutexvar_epi64(order, packed));
    done.consumed += 2 * kHalf;
    done.produced += 2 * kHalf;
  }
  return done;
}

/// Units are spread into pairs or fours of bytes. The last byte of each belongs to the output even
/// when it is zero, the others when they are not.
constexpr Mask64 kLastOfPairs = 0xAAAA'AAAA'AAAA'AAAA;
constexpr Mask64 kLastOfFours = 0x8888'8888'8888'8888;

ZT_TARGET_AVX512 inline Mask64 usedBytes(__m512i spread, Mask64 always) noexcept {
  return _mm512_test_epi8_mask(spread, spread) | always;
}

/// Of a character of four bytes: the two that a high surrogate stands for.
ZT_TARGET_AVX512 inline __m512i firstHalfOf(__m512i units) noexcept {
  const __m512i upper = _mm512_sub_epi16(units, words(0xD7C0));
  return _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(upper, 8), words(0x80F0)),
                         _mm512_and_si512(_mm512_slli_epi16(upper, 6), words(0x3F00)));
}

/// Of a character of four bytes: the two that a low surrogate stands for; two bits of the first one
/// come from the unit in front.
ZT_TARGET_AVX512 inline __m512i secondHalfOf(__m512i units, __m512i tail) noexcept {
  const __m512i before = _mm512_permutexvar_epi16(load(kBefore), units);
  return _mm512_or_si512(
      _mm512_or_si512(_mm512_and_si512(_mm512_slli_epi16(before, 4), words(0x30)),
                      _mm512_and_si512(_mm512_srli_epi16(units, 6), words(0xF))),
      _mm512_or_si512(_mm512_slli_epi16(tail, 8), words(0x80)));
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
      done = widenBlocks(in, out, {done.consumed + count, done.produced + count});
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
    const Mask64 owedNext =
        rest < kBlockBytes ? expected >> rest : (first >> 63) | (three >> 62) | (four >> 61);
    const __m512i a = _mm512_maskz_compress_epi8(yields, block.at);
    const __m512i b = _mm512_maskz_compress_epi8(yields, block.next);
    if ((three | owedLow) == 0) {
      storeUnits(units, room, count,
                 shortUnitsOf(_mm512_castsi512_si256(a), _mm512_castsi512_si256(b)));
      if (count > kHalf)
        storeUnits(units + kHalf, room - kHalf, count - kHalf,
                   shortUnitsOf(_mm512_extracti64x4_epi64(a, 1), _mm512_extracti64x4_epi64(b, 1)));
    } else {
      const bool withPairs = (four | owedLow) != 0;
      const __m512i c = _mm512_maskz_compress_epi8(yields, block.afterNext);
      __mmask32 bad;
      const __m512i lower = unitsOf(_mm512_castsi512_si256(a), _mm512_castsi512_si256(b),
                                    _mm512_castsi512_si256(c), withPairs, bad);
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
    const char16_t* from = in.data() + done.consumed;
    const std::size_t rest = in.size() - done.consumed;
    const std::size_t room = out.size() - done.produced;
    std::uint8_t* bytes = out.data() + done.produced;
    const std::size_t count = std::min(rest, kHalf);
    const __m512i units =
        count == kHalf ? _mm512_loadu_si512(from)
                       : _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lowBits(count)), from);
    const __mmask32 isLong = _mm512_cmpge_epu16_mask(units, words(0x80));
    if (isLong == 0) {
      if (room < count) break;
      storeBytes(bytes, room, count, _mm512_castsi256_si512(_mm512_cvtepi16_epi8(units)));
      done = narrowBlocks(in, out, {done.consumed + count, done.produced + count});
      continue;
    }
    __mmask32 isLongest = _mm512_cmpge_epu16_mask(units, words(0x800));
    const __m512i tail = _mm512_or_si512(_mm512_and_si512(units, words(0x3F)), words(0x80));
    const __m512i marks = _mm512_mask_mov_epi16(words(0xC0), isLongest, words(0x80));
    const __m512i lead = _mm512_maskz_mov_epi16(
        isLong, _mm512_or_si512(marks, _mm512_and_si512(_mm512_srli_epi16(units, 6), words(0x3F))));
    __m512i pair =
        _mm512_or_si512(lead, _mm512_slli_epi16(_mm512_mask_mov_epi16(units, isLong, tail), 8));
    if (isLongest == 0) {
      const Mask64 used = usedBytes(pair, kLastOfPairs) & lowBits(2 * count);
      const auto length = static_cast<std::size_t>(std::popcount(used));
      if (room < length) break;
      storeBytes(bytes, room, length, _mm512_maskz_compress_epi8(used, pair));
      done.consumed += count;
      done.produced += length;
      continue;
    }
    std::size_t taken = count;
    const __m512i kind = _mm512_and_si512(units, words(0xFC00));
    const __mmask32 highs = _mm512_cmpeq_epi16_mask(kind, words(0xD800));
    const __mmask32 lows = _mm512_cmpeq_epi16_mask(kind, words(0xDC00));
    if ((highs | lows) != 0) {
      if (lows != static_cast<__mmask32>((Mask64{highs} << 1) & lowBits(count))) break;
      if ((highs >> (count - 1)) != 0) --taken;  // its partner stands in the next block
      if (taken == 0) break;
      pair = _mm512_mask_mov_epi16(pair, highs, firstHalfOf(units));
      pair = _mm512_mask_mov_epi16(pair, lows, secondHalfOf(units, tail));
      isLongest &= ~(highs | lows);
    }
    const __m512i top = _mm512_maskz_mov_epi16(
        isLongest, _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi16(units, 4), words(0x0F00)),
                                   words(0xE000)));
    const __m512i lower = _mm512_permutex2var_epi16(top, load(kInterleaveLower), pair);
    const __m512i upper = _mm512_permutex2var_epi16(top, load(kInterleaveUpper), pair);
    const std::size_t quarter = std::min<std::size_t>(taken, 16);
    const Mask64 usedLower = usedBytes(lower, kLastOfFours) & lowBits(4 * quarter);
    const Mask64 usedUpper = usedBytes(upper, kLastOfFours) & lowBits(4 * (taken - quarter));
    const auto lengthLower = static_cast<std::size_t>(std::popcount(usedLower));
    const auto lengthUpper = static_cast<std::size_t>(std::popcount(usedUpper));
    if (room < lengthLower + lengthUpper) break;
    storeBytes(bytes, room, lengthLower, _mm512_maskz_compress_epi8(usedLower, lower));
    storeBytes(bytes + lengthLower, room - lengthLower, lengthUpper,
               _mm512_maskz_compress_epi8(usedUpper, upper));
    done.consumed += taken;
    done.produced += lengthLower + lengthUpper;
  }
  return done;
}

}  // namespace zantrel

#endif

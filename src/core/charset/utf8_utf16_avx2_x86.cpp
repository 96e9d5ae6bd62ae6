// UTF-8 and UTF-16 with AVX2: 32 bytes or 16 units a step.
//
// The method is that of the AVX-512 kernels. From UTF-8: at every byte the unit is computed that a
// character would have which starts there (or, at a third byte of four, the low surrogate), and the
// places that do yield a unit are kept. Well-formedness is the equality of the expected and the
// actual continuation bytes, plus a look-up of the pairs of bytes that are too low or too high.
// From UTF-16: each unit is spread into its one to three bytes, half a pair into its two, and the
// gaps are closed.
//
// In place of the compress instruction, which AVX2 lacks, stand byte shuffles: the bits that say
// what to keep of 16 bytes pick one of 256 shuffles. Each shuffle writes a whole register, of which
// the next store overwrites what is too much.

#include "core/charset/utf8_utf16_kernels.h"

#ifdef ZT_X86_64

#include <array>

#include "platform/x86_intrinsics.h"

namespace zantrel {
namespace {

struct alignas(16) Shuffle {
  std::uint8_t from[16];
};
using Shuffles = std::array<Shuffle, 256>;

// Of 8 units those whose bit is set.
constexpr Shuffles kKeepUnits = [] {
  Shuffles table{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    unsigned count = 0;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if ((mask >> unit & 1) == 0) continue;
      table[mask].from[count++] = static_cast<std::uint8_t>(2 * unit);
      table[mask].from[count++] = static_cast<std::uint8_t>(2 * unit + 1);
    }
  }
  return table;
}();

// Of 8 pairs of bytes the second one, and the first one of those whose bit is set.
constexpr Shuffles kKeepTwo = [] {
  Shuffles table{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    unsigned count = 0;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if ((mask >> unit & 1) != 0) {
        table[mask].from[count++] = static_cast<std::uint8_t>(2 * unit);
      }
      table[mask].from[count++] = static_cast<std::uint8_t>(2 * unit + 1);
    }
  }
  return table;
}();

// Of 4 groups of four bytes the last one; with the lower of a group's two bits set the third one
// too, with the upper one the second.
constexpr Shuffles kKeepThree = [] {
  Shuffles table{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    unsigned count = 0;
    for (unsigned unit = 0; unit < 4; ++unit) {
      const unsigned bits = mask >> 2 * unit & 3;
      if ((bits & 2) != 0) table[mask].from[count++] = static_cast<std::uint8_t>(4 * unit + 1);
      if ((bits & 1) != 0) table[mask].from[count++] = static_cast<std::uint8_t>(4 * unit + 2);
      table[mask].from[count++] = static_cast<std::uint8_t>(4 * unit + 3);
    }
  }
  return table;
}();

// Faults of a first byte and the continuation byte behind it: the pair has one when the entries of
// its three nibbles share a bit.
constexpr std::uint8_t kTwoTooLow = 1;     // C0, C1
constexpr std::uint8_t kThreeTooLow = 2;   // E0 before 80..9F
constexpr std::uint8_t kSurrogate = 4;     // ED before A0..BF
constexpr std::uint8_t kFourTooLow = 8;    // F0 before 80..8F
constexpr std::uint8_t kFourTooHigh = 16;  // F4 before 90..BF
constexpr std::uint8_t kNoFirst = 32;      // F5 and above
constexpr std::uint8_t kAnySecond = kTwoTooLow | kNoFirst;

constexpr Shuffle kFaultsByHigh = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kTwoTooLow, 0,
                                    kThreeTooLow | kSurrogate,
                                    kFourTooLow | kFourTooHigh | kNoFirst}};
constexpr Shuffle kFaultsByLow = {{kTwoTooLow | kThreeTooLow | kFourTooLow, kTwoTooLow, 0, 0,
                                   kFourTooHigh, kNoFirst, kNoFirst, kNoFirst, kNoFirst, kNoFirst,
                                   kNoFirst, kNoFirst, kNoFirst, kNoFirst | kSurrogate, kNoFirst,
                                   kNoFirst}};
constexpr Shuffle kFaultsBySecond = {
    {0, 0, 0, 0, 0, 0, 0, 0, kAnySecond | kThreeTooLow | kFourTooLow,
     kAnySecond | kThreeTooLow | kFourTooHigh, kAnySecond | kSurrogate | kFourTooHigh,
     kAnySecond | kSurrogate | kFourTooHigh, 0, 0, 0, 0}};

ZT_TARGET_AVX2 inline __m256i load(const void* p) noexcept {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

ZT_TARGET_AVX2 inline __m256i bytes(int value) noexcept {
  return _mm256_set1_epi8(static_cast<char>(value));
}

ZT_TARGET_AVX2 inline __m256i words(int value) noexcept {
  return _mm256_set1_epi16(static_cast<short>(value));
}

ZT_TARGET_AVX2 inline std::uint32_t topBits(__m256i value) noexcept {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(value));
}

ZT_TARGET_AVX2 inline __m256i equalWords(__m256i a, int b) noexcept {
  return _mm256_cmpeq_epi16(a, words(b));
}

ZT_TARGET_AVX2 inline __m256i wordsFrom(__m256i value, int lowest) noexcept {
  return _mm256_cmpeq_epi16(_mm256_max_epu16(value, words(lowest)), value);
}

ZT_TARGET_AVX2 inline __m256i lookUp(const Shuffle& table, __m256i nibbles) noexcept {
  const auto* from = reinterpret_cast<const __m128i*>(table.from);
  return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_load_si128(from)), nibbles);
}

ZT_TARGET_AVX2 inline void storeKept(void* out, __m128i group, const Shuffle& shuffle) noexcept {
  const __m128i from = _mm_load_si128(reinterpret_cast<const __m128i*>(shuffle.from));
  _mm_storeu_si128(static_cast<__m128i*>(out), _mm_shuffle_epi8(group, from));
}

ZT_TARGET_AVX2 inline std::size_t countBits(std::uint32_t mask) noexcept {
  return static_cast<std::size_t>(_mm_popcnt_u32(mask));
}

/// Of each byte, high nibble or low nibble.
ZT_TARGET_AVX2 inline __m256i highNibbles(__m256i value) noexcept {
  return _mm256_and_si256(_mm256_srli_epi16(value, 4), bytes(15));
}

ZT_TARGET_AVX2 inline bool hasFaults(__m256i at, __m256i next) noexcept {
  const __m256i first = _mm256_and_si256(lookUp(kFaultsByHigh, highNibbles(at)),
                                         lookUp(kFaultsByLow, _mm256_and_si256(at, bytes(15))));
  return _mm256_testz_si256(first, lookUp(kFaultsBySecond, highNibbles(next))) == 0;
}

/// What the characters of a block are made of at most.
enum class Longest : std::uint8_t { TwoBytes, ThreeBytes, FourBytes };

/// Bytes in 16-bit lanes, and the same of the bytes one and two places further on.
struct Gathered {
  __m256i first;
  __m256i second;
  __m256i third;
};

ZT_TARGET_AVX2 inline Gathered gatherLow(__m256i at, __m256i next, __m256i afterNext) noexcept {
  const __m256i zero = _mm256_setzero_si256();
  return {_mm256_unpacklo_epi8(at, zero), _mm256_unpacklo_epi8(next, zero),
          _mm256_unpacklo_epi8(afterNext, zero)};
}

ZT_TARGET_AVX2 inline Gathered gatherHigh(__m256i at, __m256i next, __m256i afterNext) noexcept {
  const __m256i zero = _mm256_setzero_si256();
  return {_mm256_unpackhi_epi8(at, zero), _mm256_unpackhi_epi8(next, zero),
          _mm256_unpackhi_epi8(afterNext, zero)};
}

/// The constants take the marker bits of all bytes away at once, modulo 2^16.
ZT_TARGET_AVX2 inline __m256i unitsOf(const Gathered& g, Longest longest) noexcept {
  const __m256i two =
      _mm256_sub_epi16(_mm256_add_epi16(_mm256_slli_epi16(g.first, 6), g.second), words(0x3080));
  const __m256i isTwo = _mm256_cmpgt_epi16(g.first, words(0xBF));
  __m256i units = _mm256_blendv_epi8(g.first, two, isTwo);
  if (longest == Longest::TwoBytes) return units;
  const __m256i three = _mm256_sub_epi16(
      _mm256_add_epi16(
          _mm256_add_epi16(_mm256_slli_epi16(g.first, 12), _mm256_slli_epi16(g.second, 6)),
          g.third),
      words(0x2080));
  units = _mm256_blendv_epi8(units, three, _mm256_cmpgt_epi16(g.first, words(0xDF)));
  if (longest == Longest::ThreeBytes) return units;
  const __m256i high = _mm256_sub_epi16(
      _mm256_add_epi16(
          _mm256_add_epi16(_mm256_slli_epi16(g.first, 8), _mm256_slli_epi16(g.second, 2)),
          _mm256_srli_epi16(g.third, 4)),
      words(0x1A48));
  const __m256i low = _mm256_or_si256(_mm256_and_si256(two, words(0x3FF)), words(0xDC00));
  // Of the continuation bytes only those in third place are kept.
  const __m256i isLow = _mm256_andnot_si256(isTwo, _mm256_cmpgt_epi16(g.first, words(0x7F)));
  units = _mm256_blendv_epi8(units, high, _mm256_cmpgt_epi16(g.first, words(0xEF)));
  return _mm256_blendv_epi8(units, low, isLow);
}

/// Widens 32 bytes.
ZT_TARGET_AVX2 inline void storeWidened(char16_t* out, __m256i text) noexcept {
  auto* units = reinterpret_cast<__m256i*>(out);
  _mm256_storeu_si256(units, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(text)));
  _mm256_storeu_si256(units + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(text, 1)));
}

}  // namespace

ZT_TARGET_AVX2 KernelProgress utf8ToUtf16Avx2(ByteSpan in, std::span<char16_t> out) noexcept {
  constexpr std::size_t kStep = 32;
  constexpr std::size_t kReads = kStep + 2;
  KernelProgress done;
  std::uint64_t owed = 0;     // continuation bytes that characters of the block before still need
  std::uint64_t owedLow = 0;  // places of low surrogates among them
  while (in.size() - done.consumed >= kReads && out.size() - done.produced >= kStep) {
    const std::uint8_t* const from = in.data() + done.consumed;
    char16_t* const to = out.data() + done.produced;
    const __m256i at = load(from);
    const std::uint32_t beyondAscii = topBits(at);
    if ((beyondAscii | owed) == 0) {
      storeWidened(to, at);
      done.consumed += kStep;
      done.produced += kStep;
      continue;
    }
    const __m256i next = load(from + 1);
    const __m256i afterNext = load(from + 2);
    const std::uint64_t first = topBits(_mm256_subs_epu8(at, bytes(0x40)));  // C0 and above
    const std::uint64_t three = topBits(_mm256_subs_epu8(at, bytes(0x60)));
    const std::uint64_t four = topBits(_mm256_subs_epu8(at, bytes(0x70)));
    const std::uint64_t continuations = beyondAscii & ~first;
    const std::uint64_t expected = owed | first << 1 | three << 2 | four << 3;
    if (static_cast<std::uint32_t>(expected) != continuations) break;
    const std::uint64_t lows = owedLow | four << 2;
    Longest longest = lows != 0 ? Longest::FourBytes : Longest::ThreeBytes;
    if ((three | lows) == 0) {
      if (topBits(_mm256_subs_epu8(at, bytes(0x42))) != first) break;  // C0 or C1
      longest = Longest::TwoBytes;
    } else if (hasFaults(at, next)) {
      break;
    }
    const auto yields = static_cast<std::uint32_t>(~continuations | lows);
    const __m256i outer = unitsOf(gatherLow(at, next, afterNext), longest);
    const __m256i inner = unitsOf(gatherHigh(at, next, afterNext), longest);
    storeKept(to, _mm256_castsi256_si128(outer), kKeepUnits[yields & 0xFF]);
    storeKept(to + countBits(yields & 0xFF), _mm256_castsi256_si128(inner),
              kKeepUnits[yields >> 8 & 0xFF]);
    storeKept(to + countBits(yields & 0xFFFF), _mm256_extracti128_si256(outer, 1),
              kKeepUnits[yields >> 16 & 0xFF]);
    storeKept(to + countBits(yields & 0xFFFFFF), _mm256_extracti128_si256(inner, 1),
              kKeepUnits[yields >> 24]);
    done.consumed += kStep;
    done.produced += countBits(yields);
    owed = expected >> 32;
    owedLow = lows >> 32;
  }
  return owed != 0 ? withoutHalfCharacter(in, done) : done;
}

ZT_TARGET_AVX2 KernelProgress utf16ToUtf8Avx2(std::span<const char16_t> in,
                                              std::span<std::uint8_t> out) noexcept {
  constexpr std::size_t kStep = 16;
  constexpr std::size_t kWrites = 3 * 12 + 16;  // the last of four stores behind the longest three
  KernelProgress done;
  while (in.size() - done.consumed >= 2 * kStep && out.size() - done.produced >= kWrites) {
    const char16_t* const from = in.data() + done.consumed;
    std::uint8_t* const to = out.data() + done.produced;
    const __m256i units = load(from);
    const __m256i following = load(from + kStep);
    if (_mm256_testz_si256(_mm256_or_si256(units, following), words(0xFF80)) != 0) {
      const __m256i packed = _mm256_packus_epi16(units, following);
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                          _mm256_permute4x64_epi64(packed, 0b11011000));
      done.consumed += 2 * kStep;
      done.produced += 2 * kStep;
      continue;
    }
    const __m256i isLong = wordsFrom(units, 0x80);
    __m256i isLongest = wordsFrom(units, 0x800);
    const __m256i tail = _mm256_or_si256(_mm256_and_si256(units, words(0x3F)), words(0x80));
    const __m256i lead =
        _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(units, 6), words(0x3F)),
                        _mm256_andnot_si256(_mm256_and_si256(isLongest, words(0x40)), words(0xC0)));
    __m256i pair =
        _mm256_or_si256(lead, _mm256_slli_epi16(_mm256_blendv_epi8(units, tail, isLong), 8));
    if (topBits(isLongest) == 0) {
      const std::uint32_t longs = topBits(_mm256_packs_epi16(isLong, isLong));
      const std::uint32_t below = longs & 0xFF;
      const std::uint32_t above = longs >> 16 & 0xFF;
      storeKept(to, _mm256_castsi256_si128(pair), kKeepTwo[below]);
      storeKept(to + 8 + countBits(below), _mm256_extracti128_si256(pair, 1), kKeepTwo[above]);
      done.consumed += kStep;
      done.produced += kStep + countBits(below) + countBits(above);
      continue;
    }
    std::size_t taken = kStep;
    const __m256i kind = _mm256_and_si256(units, words(0xFC00));
    const __m256i isHigh = equalWords(kind, 0xD800);
    const __m256i isLow = equalWords(kind, 0xDC00);
    const std::uint32_t highs = topBits(isHigh);
    const std::uint32_t lows = topBits(isLow);
    if ((highs | lows) != 0) {
      if (lows != highs << 2) break;  // one without its partner
      if (highs >> 31 != 0) --taken;  // its partner stands in the next block
      const __m256i before =
          _mm256_alignr_epi8(units, _mm256_permute2x128_si256(units, units, 0x08), 14);
      const __m256i upper = _mm256_sub_epi16(units, words(0xD7C0));
      const __m256i highPair =
          _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(upper, 8), words(0x80F0)),
                          _mm256_and_si256(_mm256_slli_epi16(upper, 6), words(0x3F00)));
      const __m256i lowPair = _mm256_or_si256(
          _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(before, 4), words(0x30)),
                          _mm256_and_si256(_mm256_srli_epi16(units, 6), words(0xF))),
          _mm256_or_si256(_mm256_slli_epi16(tail, 8), words(0x80)));
      pair = _mm256_blendv_epi8(pair, highPair, isHigh);
      pair = _mm256_blendv_epi8(pair, lowPair, isLow);
      isLongest = _mm256_andnot_si256(_mm256_or_si256(isHigh, isLow), isLongest);
    }
    const __m256i top = _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi16(units, 4), words(0x0F00)), words(0xE000));
    const __m256i outer = _mm256_unpacklo_epi16(top, pair);
    const __m256i inner = _mm256_unpackhi_epi16(top, pair);
    // Two bits a unit: more than one byte, more than two.
    const std::uint32_t lengths =
        topBits(_mm256_and_si256(isLong, _mm256_or_si256(isLongest, words(0xFF))));
    storeKept(to, _mm256_castsi256_si128(outer), kKeepThree[lengths & 0xFF]);
    storeKept(to + 4 + countBits(lengths & 0xFF), _mm256_castsi256_si128(inner),
              kKeepThree[lengths >> 8 & 0xFF]);
    storeKept(to + 8 + countBits(lengths & 0xFFFF), _mm256_extracti128_si256(outer, 1),
              kKeepThree[lengths >> 16 & 0xFF]);
    storeKept(to + 12 + countBits(lengths & 0xFFFFFF), _mm256_extracti128_si256(inner, 1),
              kKeepThree[lengths >> 24]);
    done.consumed += taken;
    done.produced += kStep + countBits(lengths) - 2 * (kStep - taken);
  }
  return done;
}

ZT_TARGET_AVX2 std::size_t swapUnitsAvx2(ByteSpan in, std::uint8_t* out) noexcept {
  const __m256i order = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
  std::size_t i = 0;
  for (; in.size() - i >= 32; i += 32) {
    const __m256i swapped = _mm256_shuffle_epi8(load(in.data() + i), order);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), swapped);
  }
  return i;
}

}  // namespace zantrel

#endif

// Base64 on vectors.
//
// AVX2: multiplications move the six-bit fields into place (six_bits_x86.h), byte shuffles serve as
// tables. AVX-512 VBMI: one permutation places the bytes, one
// multishift cuts the fields, one permutation is the alphabet; the other way, a table of 128
// entries in two registers maps characters to values.
//
// The AVX-512 decoder covers the lenient rule completely. Blocks of digits alone go straight to the
// output; from the first other block on, values are compressed into a staging area in first-level
// cache and packed from there, so that line breaks cost next to nothing.

#include "core/encode/base64_kernels.h"

#if defined(ZT_X86_64)

#include <array>
#include <cstring>

#include "core/avx512_x86.h"
#include "core/encode/six_bits_x86.h"

namespace zantrel::base64 {
namespace {

// --- AVX2 ---

using avx512::loadSome;
using avx512::lowBits;
using six_bits::inBothHalves;

// Offset from value to character, by a class of the value: 0 for A..Z, 1 for a..z, 2..11 for the
// digits, 12 and 13 for "+" and "/".
alignas(16) constexpr char kEncodeOffsets[16] = {
    'A',      'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
    '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0,        0};

// Tables by high and low nibble: a character is a digit of the alphabet when the two entries share
// no bit. Offsets from character to value by high nibble, with "/" moved to entry 1.
alignas(16) constexpr std::uint8_t kClassByLow[16] = {
    0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A};
alignas(16) constexpr std::uint8_t kClassByHigh[16] = {
    0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10};
alignas(16) constexpr signed char kDecodeOffsets[16] = {0, 16, 19, 4, -65, -65, -71, -71,
                                                        0, 0,  0,  0, 0,   0,   0,   0};

class EncoderAvx2 {
 public:
  static constexpr std::size_t kStep = six_bits::kBytes;
  static constexpr std::size_t kReads = six_bits::kReads;

  ZT_TARGET_AVX2 EncoderAvx2() noexcept : offsets_(inBothHalves(kEncodeOffsets)) {}

  ZT_TARGET_AVX2 void step(const std::uint8_t* in, char* out) const noexcept {
    const __m256i values = six_bits::cut(in);
    const __m256i beyondCapitals = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));  // -1 each
    const __m256i kinds =
        _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), beyondCapitals);
    const __m256i text = _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets_, kinds));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
  }

 private:
  __m256i offsets_;
};

// Values of 32 characters, and whether all are digits of the alphabet.
class DecoderAvx2 {
 public:
  ZT_TARGET_AVX2 DecoderAvx2() noexcept
      : classByLow_(inBothHalves(kClassByLow)),
        classByHigh_(inBothHalves(kClassByHigh)),
        offsets_(inBothHalves(kDecodeOffsets)) {}

  /// `strays` is zero in the bytes of digits, and in no others.
  ZT_TARGET_AVX2 __m256i values(const char* in, __m256i& strays) const noexcept {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    const __m256i slash = _mm256_set1_epi8('/');  // 2F: also a mask that leaves a low nibble
    const __m256i highNibbles = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
    strays = _mm256_and_si256(_mm256_shuffle_epi8(classByLow_, _mm256_and_si256(text, slash)),
                              _mm256_shuffle_epi8(classByHigh_, highNibbles));
    const __m256i rows = _mm256_add_epi8(_mm256_cmpeq_epi8(text, slash), highNibbles);
    return _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets_, rows));
  }

 private:
  __m256i classByLow_;
  __m256i classByHigh_;
  __m256i offsets_;
};

// --- AVX-512 ---

constexpr std::uint8_t kUncleanFlag = 0x80;

using Table64 = std::array<std::uint8_t, 64>;

// Byte 4g + k of the spread block comes from byte 3g + {1, 0, 2, 1}[k].
alignas(64) constexpr Table64 kSpread512 = [] {
  Table64 table{};
  for (unsigned i = 0; i < 64; ++i)
    table[i] = static_cast<std::uint8_t>(i / 4 * 3 + std::array{1U, 0U, 2U, 1U}[i % 4]);
  return table;
}();

// Where the four fields start in 32 spread bits, for both halves of 64.
alignas(64) constexpr Table64 kFieldShifts = [] {
  Table64 table{};
  for (unsigned i = 0; i < 64; ++i)
    table[i] = static_cast<std::uint8_t>(std::array{10U, 4U, 22U, 16U}[i % 4] + i / 4 % 2 * 32);
  return table;
}();

// Byte 3g + k of the output is byte 4g + 2 - k of the joined groups.
alignas(64) constexpr Table64 kGather512 = [] {
  Table64 table{};
  for (unsigned i = 0; i < 48; ++i) table[i] = static_cast<std::uint8_t>(i / 3 * 4 + 2 - i % 3);
  return table;
}();

alignas(64) constexpr std::array<std::uint8_t, 128> kDecodeTable = [] {
  std::array<std::uint8_t, 128> table{};
  for (unsigned c = 0; c < 128; ++c) {
    const std::uint8_t value = decodedValue(c);
    table[c] = value < 64 ? value : kUncleanFlag;
  }
  return table;
}();

ZT_TARGET_AVX512 inline __m512i load(const void* p) noexcept {
  return _mm512_loadu_si512(p);
}

// From this much output on, stores go past the caches, which saves reading every line first; they
// need an address that is a multiple of 16.
constexpr std::size_t kStreamFrom = std::size_t{8} << 20;

inline bool isStreamed(const void* out, std::size_t size) noexcept {
  return size >= kStreamFrom && reinterpret_cast<std::uintptr_t>(out) % 16 == 0;
}

// Stores the first 16 * kParts bytes.
template <int kParts>
ZT_TARGET_AVX512 inline void stream(void* out, __m512i bytes) noexcept {
  auto* const to = static_cast<__m128i*>(out);
  _mm_stream_si128(to, _mm512_castsi512_si128(bytes));
  _mm_stream_si128(to + 1, _mm512_extracti32x4_epi32(bytes, 1));
  _mm_stream_si128(to + 2, _mm512_extracti32x4_epi32(bytes, 2));
  if constexpr (kParts == 4) _mm_stream_si128(to + 3, _mm512_extracti32x4_epi32(bytes, 3));
}

class EncoderAvx512 {
 public:
  static constexpr std::size_t kStep = 48;
  static constexpr std::size_t kReads = 64;

  ZT_TARGET_AVX512 EncoderAvx512() noexcept
      : spread_(load(kSpread512.data())),
        shifts_(load(kFieldShifts.data())),
        alphabet_(load(kAlphabet)) {}

  ZT_TARGET_AVX512 __m512i encode(__m512i bytes) const noexcept {
    const __m512i groups = _mm512_permutexvar_epi8(spread_, bytes);
    return _mm512_permutexvar_epi8(_mm512_multishift_epi64_epi8(shifts_, groups), alphabet_);
  }
  ZT_TARGET_AVX512 void step(const std::uint8_t* in, char* out) const noexcept {
    _mm512_storeu_si512(out, encode(load(in)));
  }

 private:
  __m512i spread_;
  __m512i shifts_;
  __m512i alphabet_;
};

// 64 values to 48 bytes.
ZT_TARGET_AVX512 inline __m512i pack(__m512i values, __m512i gather) noexcept {
  const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  return _mm512_maskz_permutexvar_epi8(lowBits(48), gather, groups);
}

// The lenient rule on any text: values collect in a staging area that is packed when it is full.
class LenientDecoder {
 public:
  ZT_TARGET_AVX512 explicit LenientDecoder(std::uint8_t* out) noexcept : out_(out) {}

  ZT_TARGET_AVX512 std::uint8_t* run(const char* in, std::size_t size) noexcept {
    const __m512i tableLow = load(kDecodeTable.data());
    const __m512i tableHigh = load(kDecodeTable.data() + 64);
    for (std::size_t i = 0; i < size; i += 64) {
      const std::uint64_t present = lowBits(size - i);
      const __m512i text = loadSome(in + i, size - i);
      const __m512i values = _mm512_permutex2var_epi8(tableLow, text, tableHigh);
      std::uint64_t wanted = present & ~_mm512_movepi8_mask(_mm512_or_si512(text, values));
      const std::uint64_t stops = present & (_mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('=')) |
                                             _mm512_testn_epi8_mask(text, text));
      if (stops != 0) wanted &= (stops & (0 - stops)) - 1;
      _mm512_storeu_si512(staged_ + count_, _mm512_maskz_compress_epi8(wanted, values));
      count_ += static_cast<std::size_t>(_mm_popcnt_u64(wanted));
      if (stops != 0) break;
      if (count_ >= kStaged) packFullBlocks();
    }
    packFullBlocks();
    // Of an incomplete group only the whole bytes count; what stands behind its values would add to
    // them.
    const std::size_t rest = count_ / 4 * 3 + (count_ % 4 == 0 ? 0 : count_ % 4 - 1);
    _mm512_mask_storeu_epi8(out_, lowBits(rest),
                            pack(loadSome(staged_, count_), load(kGather512.data())));
    return out_ + rest;
  }

 private:
  static constexpr std::size_t kStaged = 4096;

  ZT_TARGET_AVX512 void packFullBlocks() noexcept {
    const __m512i gather = load(kGather512.data());
    std::size_t done = 0;
    // What a plain store writes too much, the next one overwrites; masked ones are slow outside the
    // caches, so only the last is.
    for (; done + 128 <= count_; done += 64, out_ += 48)
      _mm512_storeu_si512(out_, pack(load(staged_ + done), gather));
    for (; done + 64 <= count_; done += 64, out_ += 48)
      _mm512_mask_storeu_epi8(out_, lowBits(48), pack(load(staged_ + done), gather));
    count_ -= done;
    _mm512_storeu_si512(staged_, load(staged_ + done));
  }

  std::uint8_t* out_;
  std::size_t count_ = 0;
  std::uint8_t staged_[kStaged + 128];  // content only below count_
};

}  // namespace

ZT_TARGET_AVX2 std::size_t encodeAvx2(const std::uint8_t* in, std::size_t size,
                                      char* out) noexcept {
  constexpr std::size_t kStep = EncoderAvx2::kStep;
  const EncoderAvx2 encoder;
  std::size_t i = 0;
  for (; size - i >= kStep + EncoderAvx2::kReads; i += 2 * kStep, out += 64) {
    encoder.step(in + i, out);
    encoder.step(in + i + kStep, out + 32);
  }
  for (; size - i >= EncoderAvx2::kReads; i += kStep, out += 32) encoder.step(in + i, out);
  return i;
}

ZT_TARGET_AVX512 std::size_t encodeAvx512(const std::uint8_t* in, std::size_t size,
                                          char* out) noexcept {
  const EncoderAvx512 encoder;
  std::size_t i = 0;
  if (isStreamed(out, size)) {
    for (; size - i >= EncoderAvx512::kReads; i += EncoderAvx512::kStep, out += 64)
      stream<4>(out, encoder.encode(load(in + i)));
    _mm_sfence();
  }
  for (; size - i >= EncoderAvx512::kReads; i += EncoderAvx512::kStep, out += 64)
    encoder.step(in + i, out);
  const std::size_t whole = size / 3 * 3;
  while (i < whole) {
    const std::size_t step = whole - i < 48 ? whole - i : 48;
    const __m512i text = encoder.encode(_mm512_maskz_loadu_epi8(lowBits(step), in + i));
    _mm512_mask_storeu_epi8(out, lowBits(step / 3 * 4), text);
    i += step;
    out += step / 3 * 4;
  }
  return whole;
}

// Lines are made of whole steps: what the last step writes too much, the line break and the next
// line overwrite. So as many bytes as a step reads must follow each line taken.
ZT_TARGET_AVX2 std::size_t encodeLinesAvx2(const std::uint8_t* in, std::size_t size,
                                           std::size_t lineBytes, char* out) noexcept {
  const EncoderAvx2 encoder;
  const std::size_t lineChars = lineBytes / 3 * 4;
  std::size_t i = 0;
  for (; size - i >= encoder.kReads && size - i - encoder.kReads >= lineBytes; i += lineBytes) {
    for (std::size_t k = 0; k < lineBytes; k += encoder.kStep)
      encoder.step(in + i + k, out + k / 3 * 4);
    std::memcpy(out + lineChars, "\r\n", 2);
    out += lineChars + 2;
  }
  return i;
}

ZT_TARGET_AVX512 std::size_t encodeLinesAvx512(const std::uint8_t* in, std::size_t size,
                                               std::size_t lineBytes, char* out) noexcept {
  const EncoderAvx512 encoder;
  const std::size_t lineChars = lineBytes / 3 * 4;
  std::size_t i = 0;
  for (; size - i >= encoder.kReads && size - i - encoder.kReads >= lineBytes; i += lineBytes) {
    for (std::size_t k = 0; k < lineBytes; k += encoder.kStep)
      encoder.step(in + i + k, out + k / 3 * 4);
    std::memcpy(out + lineChars, "\r\n", 2);
    out += lineChars + 2;
  }
  return i;
}

ZT_TARGET_AVX2 DecodeProgress decodeGroupsAvx2(const char* in, std::size_t size,
                                               std::uint8_t* out) noexcept {
  const std::uint8_t* const start = out;
  const DecoderAvx2 decoder;
  std::size_t i = 0;
  while (size - i >= six_bits::kValues) {
    __m256i strays;
    const __m256i values = decoder.values(in + i, strays);
    // A step writes 32 bytes of which 24 count; 12 characters more give the other 8 room.
    if (size - i >= six_bits::kValues + 12) {
      six_bits::join(values, out);
    } else {
      std::uint8_t joined[32];
      six_bits::join(values, joined);
      std::memcpy(out, joined, six_bits::kBytes);
    }
    if (_mm256_testz_si256(strays, strays) != 0) {
      i += six_bits::kValues;
      out += six_bits::kBytes;
      continue;
    }
    const __m256i digits = _mm256_cmpeq_epi8(strays, _mm256_setzero_si256());
    const std::size_t groups = _tzcnt_u32(~static_cast<unsigned>(_mm256_movemask_epi8(digits))) / 4;
    i += groups * 4;
    out += groups * 3;
    if (in[i] != '\r' || in[i + 1] != '\n') break;
    i += 2;
  }
  return {i, static_cast<std::size_t>(out - start), false};
}

ZT_TARGET_AVX512 std::size_t decodeAvx512(const char* in, std::size_t size,
                                          std::uint8_t* out) noexcept {
  const __m512i tableLow = load(kDecodeTable.data());
  const __m512i tableHigh = load(kDecodeTable.data() + 64);
  const __m512i gather = load(kGather512.data());
  const std::uint8_t* const start = out;
  std::size_t i = 0;
  if (isStreamed(out, size)) {
    for (; size - i >= 64; i += 64, out += 48) {
      const __m512i text = load(in + i);
      const __m512i values = _mm512_permutex2var_epi8(tableLow, text, tableHigh);
      if (_mm512_movepi8_mask(_mm512_or_si512(text, values)) != 0) break;
      stream<3>(out, pack(values, gather));
    }
    _mm_sfence();
  }
  // Each step writes 64 bytes of which 48 count; the 24 characters more give the other 16 room.
  for (; size - i >= 88; i += 64, out += 48) {
    const __m512i text = load(in + i);
    const __m512i values = _mm512_permutex2var_epi8(tableLow, text, tableHigh);
    if (_mm512_movepi8_mask(_mm512_or_si512(text, values)) != 0) break;
    _mm512_storeu_si512(out, pack(values, gather));
  }
  return static_cast<std::size_t>(LenientDecoder(out).run(in + i, size - i) - start);
}

}  // namespace zantrel::base64

#endif

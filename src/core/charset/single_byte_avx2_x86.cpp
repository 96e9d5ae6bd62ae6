// Single-byte code pages with AVX2, 32 items a step.
//
// A table of 128 bytes is eight byte shuffles, one for each row of 16. Row k applies to all indexes
// from 16 k on, and holds its entries XORed with those of the row before: what an index picks from
// the rows up to its own adds up to its entry. Indexes with the top bit set pick zeros everywhere.
//
// Decoding: a page whose lower half is ASCII is such a table of low bytes and one of high bytes.
//
// Encoding: the page's two fullest windows of 128 units are a table each, and the low seven bits of
// a unit index the one that its other bits equal. Units in neither are looked up singly.

#include "core/charset/single_byte_kernels.h"

#ifdef ZT_X86_64

#include "platform/x86_intrinsics.h"

namespace zantrel {
namespace {

constexpr std::size_t kStep = 32;
constexpr std::size_t kRows = 8;

ZT_TARGET_AVX2 inline __m256i load(const void* p) noexcept {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

ZT_TARGET_AVX2 inline __m256i words(int value) noexcept {
  return _mm256_set1_epi16(static_cast<short>(value));
}

ZT_TARGET_AVX2 inline bool isZero(__m256i value) noexcept {
  return _mm256_testz_si256(value, value) != 0;
}

/// The order of 64-bit groups that packing two registers leaves, and that unpacking one undoes.
ZT_TARGET_AVX2 inline __m256i swapMiddle(__m256i value) noexcept {
  return _mm256_permute4x64_epi64(value, 0b11011000);
}

class HalfTable {
 public:
  ZT_TARGET_AVX2 explicit HalfTable(const std::uint8_t* entries) noexcept {
    __m128i before = _mm_setzero_si128();
    for (std::size_t k = 0; k < kRows; ++k) {
      const __m128i row = _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + 16 * k));
      rows_[k] = _mm256_broadcastsi128_si256(_mm_xor_si128(row, before));
      before = row;
    }
  }

  ZT_TARGET_AVX2 __m256i at(__m256i indexes) const noexcept {
    __m256i found = _mm256_shuffle_epi8(rows_[0], indexes);
    for (std::size_t k = 1; k < kRows; ++k) {
      indexes = _mm256_subs_epi8(indexes, _mm256_set1_epi8(16));
      found = _mm256_xor_si256(found, _mm256_shuffle_epi8(rows_[k], indexes));
    }
    return found;
  }

 private:
  __m256i rows_[kRows];
};

}  // namespace

ZT_TARGET_AVX2 std::size_t decodeUpperHalfAvx2(const SingleByteTable& table, const std::uint8_t* in,
                                               std::size_t count, char16_t* out) noexcept {
  if (count < kStep) return 0;
  std::uint8_t halves[2][128];
  for (std::size_t k = 0; k < 128; ++k) {
    halves[0][k] = static_cast<std::uint8_t>(table.toUnicode[128 + k]);
    halves[1][k] = static_cast<std::uint8_t>(table.toUnicode[128 + k] >> 8);
  }
  const HalfTable low(halves[0]);
  const HalfTable high(halves[1]);
  std::size_t i = 0;
  for (; count - i >= kStep; i += kStep) {
    const __m256i bytes = swapMiddle(load(in + i));
    __m256i lowBytes = bytes;
    __m256i highBytes = _mm256_setzero_si256();
    if (_mm256_movemask_epi8(bytes) != 0) {
      const __m256i indexes = _mm256_xor_si256(bytes, _mm256_set1_epi8(-128));
      lowBytes = _mm256_blendv_epi8(bytes, low.at(indexes), bytes);
      highBytes = high.at(indexes);
      const __m256i both = _mm256_and_si256(lowBytes, highBytes);
      if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(both, _mm256_set1_epi8(-1))) != 0) break;
    }
    auto* const units = reinterpret_cast<__m256i*>(out + i);
    _mm256_storeu_si256(units, _mm256_unpacklo_epi8(lowBytes, highBytes));
    _mm256_storeu_si256(units + 1, _mm256_unpackhi_epi8(lowBytes, highBytes));
  }
  return i;
}

ZT_TARGET_AVX2 std::size_t encodeSingleAvx2(const SingleByteReverse& reverse, const char16_t* in,
                                            std::size_t count, std::uint8_t* out) noexcept {
  if (count < kStep) return 0;
  const std::uint16_t* const window = reverse.window;
  const HalfTable cells[] = {HalfTable(reverse.cellsOfWindow(window[0])),
                             HalfTable(reverse.cellsOfWindow(window[1]))};
  std::size_t i = 0;
  for (; count - i >= kStep; i += kStep) {
    const __m256i first = load(in + i);
    const __m256i second = load(in + i + 16);
    const __m256i firstNumber = _mm256_srli_epi16(first, 7);
    const __m256i secondNumber = _mm256_srli_epi16(second, 7);
    const __m256i indexes = _mm256_packus_epi16(_mm256_and_si256(first, words(0x7F)),
                                                _mm256_and_si256(second, words(0x7F)));
    __m256i bytes = _mm256_setzero_si256();
    for (std::size_t w = 0; w < 2; ++w) {
      const __m256i number = words(window[w]);
      const __m256i inside = _mm256_packs_epi16(_mm256_cmpeq_epi16(firstNumber, number),
                                                _mm256_cmpeq_epi16(secondNumber, number));
      if (isZero(inside)) continue;
      const __m256i outside = _mm256_andnot_si256(inside, _mm256_set1_epi8(-128));
      bytes = _mm256_or_si256(bytes, cells[w].at(_mm256_or_si256(indexes, outside)));
    }
    bytes = swapMiddle(bytes);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), bytes);
    const __m256i empty = _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256());
    for (auto others = static_cast<std::uint32_t>(_mm256_movemask_epi8(empty)); others != 0;
         others &= others - 1) {
      const std::size_t at = i + _tzcnt_u32(others);
      out[at] = reverse.cells[reverse.cellOf(in[at])];
      if (out[at] == 0 && in[at] != reverse.zeroUnit) return at;
    }
  }
  return i;
}

}  // namespace zantrel

#endif

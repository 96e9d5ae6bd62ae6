// Single-byte code pages with AVX-512 VBMI, 64 items a step.
//
// Decoding: a row of 256 code points is eight registers, four of low and four of high bytes. Each
// half comes from four byte permutations that bits 6 and 7 of the input choose between.
//
// Encoding: the page's four fullest windows of 128 units are two registers each. The low seven bits
// of a unit index the window that its other bits equal. Units in none of them are looked up singly.

#include "core/charset/single_byte_kernels.h"

#ifdef ZT_X86_64

#include "platform/x86_intrinsics.h"

namespace zantrel {

namespace {

/// A table of 256 bytes as four registers.
struct ByteTable {
  __m512i part[4];
};

ZT_TARGET_AVX512 inline __m512i lookUp(const ByteTable& table, __m512i index, __mmask64 bit6,
                                       __mmask64 bit7) noexcept {
  const __m512i lower = _mm512_mask_permutexvar_epi8(_mm512_permutexvar_epi8(index, table.part[0]),
                                                     bit6, index, table.part[1]);
  const __m512i upper = _mm512_mask_permutexvar_epi8(_mm512_permutexvar_epi8(index, table.part[2]),
                                                     bit6, index, table.part[3]);
  return _mm512_mask_blend_epi8(bit7, lower, upper);
}

/// The low and the high bytes of 64 units.
ZT_TARGET_AVX512 inline void split(const char16_t* units, __m512i& low, __m512i& high) noexcept {
  const __m512i a = _mm512_loadu_si512(units);
  const __m512i b = _mm512_loadu_si512(units + 32);
  low = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(a)), _mm512_cvtepi16_epi8(b),
                           1);
  high = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(_mm512_srli_epi16(a, 8))),
                            _mm512_cvtepi16_epi8(_mm512_srli_epi16(b, 8)), 1);
}

}  // namespace

ZT_TARGET_AVX512 std::size_t decodeSingleAvx512(const SingleByteTable& table,
                                                const std::uint8_t* in, std::size_t count,
                                                char16_t* out) noexcept {
  ByteTable low;
  ByteTable high;
  for (std::size_t k = 0; k < 4; ++k) {
    split(table.toUnicode + 64 * k, low.part[k], high.part[k]);
  }
  const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);  // for the unpacking below
  const __m512i ones = _mm512_set1_epi8(-1);
  std::size_t i = 0;
  for (; i + 64 <= count; i += 64) {
    const __m512i index = _mm512_permutexvar_epi64(order, _mm512_loadu_si512(in + i));
    const __mmask64 bit7 = _mm512_movepi8_mask(index);
    const __mmask64 bit6 = _mm512_test_epi8_mask(index, _mm512_set1_epi8(0x40));
    const __m512i lowBytes = lookUp(low, index, bit6, bit7);
    const __m512i highBytes = lookUp(high, index, bit6, bit7);
    if (_mm512_mask_cmpeq_epi8_mask(_mm512_cmpeq_epi8_mask(highBytes, ones), lowBytes, ones) != 0) {
      break;  // an undefined byte
    }
    _mm512_storeu_si512(out + i, _mm512_unpacklo_epi8(lowBytes, highBytes));
    _mm512_storeu_si512(out + i + 32, _mm512_unpackhi_epi8(lowBytes, highBytes));
  }
  return i;
}

ZT_TARGET_AVX512 std::size_t encodeSingleAvx512(const SingleByteReverse& reverse,
                                                const char16_t* in, std::size_t count,
                                                std::uint8_t* out) noexcept {
  __m512i cells[SingleByteReverse::kWindows][2];
  __m512i number[SingleByteReverse::kWindows];
  for (std::size_t w = 0; w < SingleByteReverse::kWindows; ++w) {
    const std::uint8_t* first = reverse.cellsOfWindow(reverse.window[w]);
    cells[w][0] = _mm512_loadu_si512(first);
    cells[w][1] = _mm512_loadu_si512(first + 64);
    number[w] = _mm512_set1_epi16(static_cast<short>(reverse.window[w]));
  }
  std::size_t i = 0;
  for (; i + 64 <= count; i += 64) {
    const __m512i a = _mm512_loadu_si512(in + i);
    const __m512i b = _mm512_loadu_si512(in + i + 32);
    const __m512i aNumber = _mm512_srli_epi16(a, 7);
    const __m512i bNumber = _mm512_srli_epi16(b, 7);
    const __m512i index = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(a)),
                                             _mm512_cvtepi16_epi8(b), 1);
    __m512i bytes = _mm512_setzero_si512();
    for (std::size_t w = 0; w < SingleByteReverse::kWindows; ++w) {
      const __mmask64 inWindow = _mm512_kunpackd(_mm512_cmpeq_epi16_mask(bNumber, number[w]),
                                                 _mm512_cmpeq_epi16_mask(aNumber, number[w]));
      const __m512i found = _mm512_permutex2var_epi8(cells[w][0], index, cells[w][1]);
      bytes = _mm512_mask_mov_epi8(bytes, inWindow, found);
    }
    _mm512_storeu_si512(out + i, bytes);
    for (__mmask64 others = _mm512_testn_epi8_mask(bytes, bytes); others != 0;
         others &= others - 1) {
      const std::size_t at = i + _tzcnt_u64(others);
      out[at] = reverse.cells[reverse.cellOf(in[at])];
      if (out[at] == 0 && in[at] != reverse.zeroUnit) return at;
    }
  }
  return i;
}

}  // namespace zantrel

#endif

// UTF-8 and UTF-16 with AVX2: runs of ASCII, and the byte swap of UTF-16.
//
// Text in Latin scripts is mostly ASCII, and there the widening and narrowing moves are all that is
// needed. Other characters are left to the portable loop.

#include "core/charset/utf8_utf16_kernels.h"

#ifdef ZT_X86_64

#include <immintrin.h>

namespace zantrel {

ZT_TARGET_AVX2 KernelProgress utf8ToUtf16Avx2(ByteSpan in, std::span<char16_t> out) noexcept {
  std::size_t i = 0;
  for (; in.size() - i >= 32 && out.size() - i >= 32; i += 32) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in.data() + i));
    if (_mm256_movemask_epi8(bytes) != 0) break;
    auto* units = reinterpret_cast<__m256i*>(out.data() + i);
    _mm256_storeu_si256(units, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    _mm256_storeu_si256(units + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
  }
  return {i, i};
}

ZT_TARGET_AVX2 KernelProgress utf16ToUtf8Avx2(std::span<const char16_t> in,
                                              std::span<std::uint8_t> out) noexcept {
  const __m256i beyondAscii = _mm256_set1_epi16(static_cast<short>(0xFF80));
  std::size_t i = 0;
  for (; in.size() - i >= 32 && out.size() - i >= 32; i += 32) {
    const auto* units = reinterpret_cast<const __m256i*>(in.data() + i);
    const __m256i first = _mm256_loadu_si256(units);
    const __m256i second = _mm256_loadu_si256(units + 1);
    if (_mm256_testz_si256(_mm256_or_si256(first, second), beyondAscii) == 0) break;
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0b11011000);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.data() + i), packed);
  }
  return {i, i};
}

ZT_TARGET_AVX2 std::size_t swapUnitsAvx2(ByteSpan in, std::uint8_t* out) noexcept {
  const __m256i order = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
  std::size_t i = 0;
  for (; in.size() - i >= 32; i += 32) {
    const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in.data() + i));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_shuffle_epi8(units, order));
  }
  return i;
}

}  // namespace zantrel

#endif

#include "core/encode/quoted_printable_kernels.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::quoted_printable {

ZT_TARGET_AVX2 std::size_t copyRunAvx2(const char* in, std::size_t size,
                                       std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; size - i >= 32; i += 32) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), text);
    const __m256i ends =
        _mm256_or_si256(_mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('=')),
                                        _mm256_cmpeq_epi8(text, _mm256_set1_epi8('\n'))),
                        _mm256_cmpeq_epi8(text, _mm256_setzero_si256()));
    const auto mask = static_cast<unsigned>(_mm256_movemask_epi8(ends));
    if (mask != 0) return i + _tzcnt_u32(mask);
  }
  for (; i < size && in[i] != '=' && in[i] != '\n' && in[i] != '\0'; ++i)
    out[i] = static_cast<std::uint8_t>(in[i]);
  return i;
}

ZT_TARGET_AVX512 std::size_t copyRunAvx512(const char* in, std::size_t size,
                                           std::uint8_t* out) noexcept {
  for (std::size_t i = 0; i < size; i += 64) {
    const std::size_t left = size - i;
    const __mmask64 present = left >= 64 ? ~__mmask64{0} : (__mmask64{1} << left) - 1;
    const __m512i text = _mm512_maskz_loadu_epi8(present, in + i);
    _mm512_storeu_si512(out + i, text);
    // What lies behind the input reads as zero and so ends the run as well.
    const __mmask64 ends = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('=')) |
                           _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('\n')) |
                           _mm512_testn_epi8_mask(text, text);
    if (ends != 0) return i + static_cast<std::size_t>(_tzcnt_u64(ends));
  }
  return size;
}

}  // namespace zantrel::quoted_printable

#endif

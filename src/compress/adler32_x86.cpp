// Adler-32 in vectors. A step of 64 bytes adds 64 times the sum before it and the bytes times their
// distance from the step's end to the second sum.

#include "compress/adler32_kernels.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::adler {

namespace {

#define ZT_AVX2_INLINE [[gnu::always_inline]] ZT_TARGET_AVX2 inline

alignas(64) constexpr std::int8_t kDistances[kStep] = {
    64, 63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48, 47, 46, 45, 44, 43,
    42, 41, 40, 39, 38, 37, 36, 35, 34, 33, 32, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21,
    20, 19, 18, 17, 16, 15, 14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4,  3,  2,  1};

ZT_AVX2_INLINE __m256i load(const void* p) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

// Byte times distance, in sums of four. A pair of products stays below 2^15.
ZT_AVX2_INLINE __m256i weigh(__m256i bytes, __m256i distances) {
  return _mm256_madd_epi16(_mm256_maddubs_epi16(bytes, distances), _mm256_set1_epi16(1));
}

ZT_AVX2_INLINE std::uint32_t total(__m256i x) {
  __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(x), _mm256_extracti128_si256(x, 1));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1));
  return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
}

}  // namespace

ZT_TARGET_AVX2 void avx2(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i far = load(kDistances);
  const __m256i near = load(kDistances + 32);
  __m256i sum = zero;       // of the bytes
  __m256i before = zero;    // of `sum` before each step
  __m256i weighted = zero;  // of the weighted bytes
  for (std::size_t at = 0; at < count; at += kStep) {
    const __m256i first = load(bytes + at);
    const __m256i second = load(bytes + at + 32);
    before = _mm256_add_epi32(before, sum);
    sum = _mm256_add_epi32(
        sum, _mm256_add_epi32(_mm256_sad_epu8(first, zero), _mm256_sad_epu8(second, zero)));
    weighted = _mm256_add_epi32(weighted, _mm256_add_epi32(weigh(first, far), weigh(second, near)));
  }
  sums.sums += static_cast<std::uint32_t>(count) * sums.bytes +
               total(_mm256_add_epi32(_mm256_slli_epi32(before, 6), weighted));
  sums.bytes += total(sum);
}

ZT_TARGET_AVX512 void avx512(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept {
  const __m512i zero = _mm512_setzero_si512();
  const __m512i distances = _mm512_load_si512(kDistances);
  const __m512i ones = _mm512_set1_epi16(1);
  __m512i sum = zero;
  __m512i before = zero;
  __m512i weighted = zero;
  for (std::size_t at = 0; at < count; at += kStep) {
    const __m512i step = _mm512_loadu_si512(bytes + at);
    before = _mm512_add_epi32(before, sum);
    sum = _mm512_add_epi32(sum, _mm512_sad_epu8(step, zero));
    weighted =
        _mm512_add_epi32(weighted, _mm512_madd_epi16(_mm512_maddubs_epi16(step, distances), ones));
  }
  const __m512i all = _mm512_add_epi32(_mm512_slli_epi32(before, 6), weighted);
  sums.sums += static_cast<std::uint32_t>(count) * sums.bytes +
               static_cast<std::uint32_t>(_mm512_reduce_add_epi32(all));
  sums.bytes += static_cast<std::uint32_t>(_mm512_reduce_add_epi32(sum));
}

}  // namespace zantrel::adler

#endif

#pragma once
// Three bytes and four values of six bits, with AVX2: what base64 and UU encoding have in common.
// The method is that of Mula and Lemire, "Faster Base64 Encoding and Decoding using AVX2
// Instructions" (ACM Transactions on the Web, 2018): multiplications move the fields into place.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::six_bits {

inline constexpr std::size_t kBytes = 24;   ///< of a step
inline constexpr std::size_t kValues = 32;  ///< which these are
inline constexpr std::size_t kReads = 28;   ///< bytes that cutting a step reads

alignas(16) inline constexpr std::uint8_t kSpread[16] = {1, 0, 2, 1, 4,  3, 5,  4,
                                                         7, 6, 8, 7, 10, 9, 11, 10};
alignas(16) inline constexpr signed char kGather[16] = {2, 1,  0,  6,  5,  4,  10, 9,
                                                        8, 14, 13, 12, -1, -1, -1, -1};

/// 16 bytes in both halves of a register.
ZT_TARGET_AVX2 inline __m256i inBothHalves(const void* p) noexcept {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)));
}

/// 24 bytes as 32 values, one a byte.
ZT_TARGET_AVX2 inline __m256i cut(const std::uint8_t* in) noexcept {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12));
  const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
  // Every 32 bits hold the three bytes of one group as b1 b0 b2 b1.
  const __m256i groups = _mm256_shuffle_epi8(bytes, inBothHalves(kSpread));
  const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)),
                                         _mm256_set1_epi32(0x04000040));
  const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)),
                                          _mm256_set1_epi32(0x01000010));
  return _mm256_or_si256(odd, even);
}

/// 32 values as 24 bytes; writes 32.
ZT_TARGET_AVX2 inline void join(__m256i values, std::uint8_t* out) noexcept {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i bytes =
      _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, inBothHalves(kGather)),
                                  _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
}

}  // namespace zantrel::six_bits

#endif

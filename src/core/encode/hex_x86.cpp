// Hexadecimal text on vectors. Encoding widens bytes to 16 bits, splits the nibbles and looks the
// digits up with a byte shuffle. Decoding computes every character's value as the rule for
// unvalidated digits states it, so any text gives the same bytes as the portable code.

#include "core/encode/hex_kernels.h"

#if defined(ZT_X86_64)

#include "core/encode/hex.h"
#include "platform/x86_intrinsics.h"

namespace zantrel::hex {
namespace {

ZT_TARGET_AVX2 inline __m256i digitValues(__m256i text) noexcept {
  const __m256i low = _mm256_sub_epi8(text, _mm256_set1_epi8('0'));
  const __m256i upper = _mm256_and_si256(text, _mm256_set1_epi8(static_cast<char>(0xDF)));
  const __m256i high = _mm256_sub_epi8(upper, _mm256_set1_epi8('A' - 10));
  const __m256i belowA = _mm256_cmpeq_epi8(_mm256_min_epu8(text, _mm256_set1_epi8('A' - 1)), text);
  return _mm256_blendv_epi8(high, low, belowA);
}

// Pairs of characters to 16-bit sums whose low byte is the result.
ZT_TARGET_AVX2 inline __m256i joinPairs(__m256i text) noexcept {
  const __m256i sums = _mm256_maddubs_epi16(digitValues(text), _mm256_set1_epi16(0x0110));
  return _mm256_and_si256(sums, _mm256_set1_epi16(0xFF));
}

}  // namespace

ZT_TARGET_AVX2 std::size_t encodeAvx2(const std::uint8_t* in, std::size_t size,
                                      char* out) noexcept {
  const __m256i digits =
      _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(kHexDigits)));
  std::size_t i = 0;
  for (; size - i >= 16; i += 16, out += 32) {
    const __m256i bytes =
        _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i)));
    const __m256i nibbles =
        _mm256_and_si256(_mm256_or_si256(_mm256_srli_epi16(bytes, 4), _mm256_slli_epi16(bytes, 8)),
                         _mm256_set1_epi8(15));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_shuffle_epi8(digits, nibbles));
  }
  return i;
}

ZT_TARGET_AVX512 std::size_t encodeAvx512(const std::uint8_t* in, std::size_t size,
                                          char* out) noexcept {
  const __m512i digits =
      _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(kHexDigits)));
  std::size_t i = 0;
  for (; size - i >= 32; i += 32, out += 64) {
    const __m512i bytes =
        _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i)));
    const __m512i nibbles =
        _mm512_and_si512(_mm512_or_si512(_mm512_srli_epi16(bytes, 4), _mm512_slli_epi16(bytes, 8)),
                         _mm512_set1_epi8(15));
    _mm512_storeu_si512(out, _mm512_shuffle_epi8(digits, nibbles));
  }
  return i;
}

ZT_TARGET_AVX2 std::size_t decodeAvx2(const char* in, std::size_t pairs,
                                      std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; pairs - i >= 32; i += 32) {
    const auto* const text = reinterpret_cast<const __m256i*>(in + 2 * i);
    const __m256i bytes = _mm256_packus_epi16(joinPairs(_mm256_loadu_si256(text)),
                                              joinPairs(_mm256_loadu_si256(text + 1)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                        _mm256_permute4x64_epi64(bytes, 0b11'01'10'00));
  }
  return i;
}

ZT_TARGET_AVX512 std::size_t decodeAvx512(const char* in, std::size_t pairs,
                                          std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; pairs - i >= 32; i += 32) {
    const __m512i text = _mm512_loadu_si512(in + 2 * i);
    const __m512i low = _mm512_sub_epi8(text, _mm512_set1_epi8('0'));
    const __m512i upper = _mm512_and_si512(text, _mm512_set1_epi8(static_cast<char>(0xDF)));
    const __mmask64 fromA = _mm512_cmpge_epu8_mask(text, _mm512_set1_epi8('A'));
    const __m512i values = _mm512_mask_sub_epi8(low, fromA, upper, _mm512_set1_epi8('A' - 10));
    const __m512i sums = _mm512_maddubs_epi16(values, _mm512_set1_epi16(0x0110));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm512_cvtepi16_epi8(sums));
  }
  return i;
}

}  // namespace zantrel::hex

#endif

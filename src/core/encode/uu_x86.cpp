// UU encoding on vectors: fields of six bits by multiplications (six_bits_x86.h); a digit is its
// value plus 32, but for zero.

#include "core/encode/uu_kernels.h"

#if defined(ZT_X86_64)

#include <cstring>

#include "core/encode/six_bits_x86.h"

namespace zantrel::uu {
namespace {

ZT_TARGET_AVX2 inline void encodeStep(const std::uint8_t* in, char* out) noexcept {
  const __m256i values = six_bits::cut(in);
  const __m256i zeros = _mm256_cmpeq_epi8(values, _mm256_setzero_si256());
  const __m256i offsets = _mm256_blendv_epi8(_mm256_set1_epi8(32), _mm256_set1_epi8('`'), zeros);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_add_epi8(values, offsets));
}

}  // namespace

ZT_TARGET_AVX2 std::size_t encodeLinesAvx2(const std::uint8_t* in, std::size_t size,
                                           char* out) noexcept {
  constexpr std::size_t kReads = six_bits::kBytes + six_bits::kReads;
  std::size_t i = 0;
  for (; size - i >= kReads; i += kBytesPerLine) {
    out[0] = 32 + static_cast<char>(kBytesPerLine);
    encodeStep(in + i, out + 1);
    encodeStep(in + i + six_bits::kBytes, out + 1 + six_bits::kValues);
    out += 1 + kBytesPerLine / 3 * 4;
    std::memcpy(out, "\r\n", 2);
    out += 2;
  }
  return i;
}

ZT_TARGET_AVX2 void decodeLineAvx2(const char* in, std::size_t count, std::uint8_t* out) noexcept {
  for (std::size_t done = 0; done < count; done += six_bits::kBytes) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    const __m256i values =
        _mm256_and_si256(_mm256_sub_epi8(text, _mm256_set1_epi8(32)), _mm256_set1_epi8(63));
    six_bits::join(values, out + done);
    in += six_bits::kValues;
  }
}

}  // namespace zantrel::uu

#endif

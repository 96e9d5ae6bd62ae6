#pragma once
// Small things that several AVX-512 kernels need. For files named *_x86.cpp.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::avx512 {

/// The lowest `count` bits; count may be 64 or more.
ZT_TARGET_AVX512 inline std::uint64_t lowBits(std::size_t count) noexcept {
  return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count < 64 ? count : 64));
}

/// The first 64 of `left` bytes, or what there is of them with zeros behind. Masked loads are slow
/// where memory is not in the caches yet, so they serve the end of a text only.
ZT_TARGET_AVX512 inline __m512i loadSome(const void* in, std::size_t left) noexcept {
  return left >= 64 ? _mm512_loadu_si512(in) : _mm512_maskz_loadu_epi8(lowBits(left), in);
}

/// Which bytes lie from `first` to `last`.
ZT_TARGET_AVX512 inline __mmask64 between(__m512i text, char first, char last) noexcept {
  const __m512i offset = _mm512_sub_epi8(text, _mm512_set1_epi8(first));
  return _mm512_cmple_epu8_mask(offset, _mm512_set1_epi8(static_cast<char>(last - first)));
}

}  // namespace zantrel::avx512

#endif

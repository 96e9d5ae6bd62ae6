#pragma once
// Sixteen bytes in a vector of SSE2, which every x86-64 has. For byte_block.h only, which says what
// the functions do.

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/x86_intrinsics.h"

#if defined(ZT_X86_64)

namespace zantrel {

class VectorBlock {
 public:
  static constexpr std::size_t kSize = 16;

  class Set {
   public:
    friend Set operator|(Set a, Set b) { return Set(_mm_or_si128(a.bytes_, b.bytes_)); }
    Set operator~() const { return Set(_mm_cmpeq_epi8(bytes_, _mm_setzero_si128())); }
    bool any() const { return bits() != 0; }
    std::size_t first() const {
      return static_cast<std::size_t>(std::countr_zero(bits() | 1U << kSize));
    }

   private:
    friend class VectorBlock;
    explicit Set(__m128i bytes) : bytes_(bytes) {}
    unsigned bits() const { return static_cast<unsigned>(_mm_movemask_epi8(bytes_)); }
    __m128i bytes_;
  };

  static VectorBlock load(const char* from) {
    return VectorBlock(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
  }
  void store(char* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes_); }
  Set equal(char c) const { return Set(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(c))); }
  Set atMost(std::uint8_t most) const {
    const __m128i limit = _mm_set1_epi8(static_cast<char>(most));
    return Set(_mm_cmpeq_epi8(_mm_min_epu8(bytes_, limit), bytes_));
  }

 private:
  explicit VectorBlock(__m128i bytes) : bytes_(bytes) {}
  __m128i bytes_;
};

}  // namespace zantrel

#endif

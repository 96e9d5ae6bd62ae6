#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"
#if defined(ZT_X86_64)
#include "platform/x86_intrinsics.h"
#endif

namespace zantrel {

/// A list of up to 256 different bytes of which the one used last stands first. Eight positions lie
/// in a word, the first in its lowest byte, so that most moves are a few operations on one word.
class Bzip2MoveToFront {
 public:
  /// An empty list.
  void clear() noexcept {
    for (std::uint64_t& word : words_) word = 0;
    size_ = 0;
  }
  /// Adds a byte behind all others.
  void append(std::uint8_t byte) noexcept {
    words_[size_ / 8] |= std::uint64_t{byte} << 8 * (size_ % 8);
    ++size_;
  }

  std::uint8_t front() const noexcept { return static_cast<std::uint8_t>(words_[0]); }

  /// Moves the byte at a position, which must be below the size, to the front.
  std::uint8_t take(unsigned position) noexcept {
    const unsigned last = position / 8;
    const unsigned shift = 8 * (position % 8);
    const std::uint64_t byte = words_[last] >> shift & 255;
    shiftIn(byte, last, shift);
    return static_cast<std::uint8_t>(byte);
  }

  /// Position of a byte, which must be in the list; it moves to the front.
  unsigned find(std::uint8_t byte) noexcept {
#if defined(ZT_X86_64)
    return findInVectors(byte);
#else
    return findInWords(byte);
#endif
  }
  /// The same on any processor.
  unsigned findInWords(std::uint8_t byte) noexcept {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    const std::uint64_t pattern = kOnes * byte;
    for (unsigned i = 0;; ++i) {
      // The lowest set bit marks the first equal byte: borrows only run upwards from there.
      const std::uint64_t difference = words_[i] ^ pattern;
      const std::uint64_t equal = (difference - kOnes) & ~difference & kOnes << 7;
      if (equal == 0) continue;
      const unsigned shift = static_cast<unsigned>(std::countr_zero(equal)) & 56U;
      shiftIn(byte, i, shift);
      return 8 * i + shift / 8;
    }
  }

 private:
  // Puts a byte in front and closes the gap at bit `shift` of the word `last`.
  void shiftIn(std::uint64_t byte, unsigned last, unsigned shift) noexcept {
    for (unsigned i = 0; i < last; ++i) {
      const std::uint64_t word = words_[i];
      words_[i] = word << 8 | byte;
      byte = word >> 56;
    }
    const std::uint64_t word = words_[last];
    const std::uint64_t moved = ~std::uint64_t{0} >> (56 - shift);
    words_[last] = ((word << 8 | byte) & moved) | (word & ~moved);
  }

#if defined(ZT_X86_64)
  // Two words at a time, moved on while they are searched.
  unsigned findInVectors(std::uint8_t byte) noexcept {
    const __m128i pattern = _mm_set1_epi8(static_cast<char>(byte));
    __m128i before = _mm_slli_si128(_mm_cvtsi32_si128(byte), 15);
    for (unsigned i = 0;; i += 2) {
      auto* const at = reinterpret_cast<__m128i*>(words_ + i);
      const __m128i bytes = _mm_load_si128(at);
      const __m128i moved = _mm_or_si128(_mm_slli_si128(bytes, 1), _mm_srli_si128(before, 15));
      const int equal = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, pattern));
      if (equal == 0) {
        _mm_store_si128(at, moved);
        before = bytes;
        continue;
      }
      const int place = std::countr_zero(static_cast<unsigned>(equal));
      const __m128i places = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
      const __m128i stays = _mm_cmpgt_epi8(places, _mm_set1_epi8(static_cast<char>(place)));
      _mm_store_si128(at,
                      _mm_or_si128(_mm_and_si128(stays, bytes), _mm_andnot_si128(stays, moved)));
      return 8 * i + static_cast<unsigned>(place);
    }
  }
#endif

  alignas(16) std::uint64_t words_[32] = {};
  unsigned size_ = 0;
};

}  // namespace zantrel

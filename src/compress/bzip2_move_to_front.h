#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

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

  std::uint64_t words_[32] = {};
  unsigned size_ = 0;
};

}  // namespace zantrel

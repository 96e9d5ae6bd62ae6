#pragma once
// Comparing and hashing bytes of the window. Twelve bytes may be read at every place and behind
// every limit, whether they belong to the data or not.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"

namespace zantrel::zee {

inline std::uint32_t load32(const std::uint8_t* p) noexcept {
  return loadWord<std::uint32_t, std::endian::little>(p);
}

inline std::uint64_t load64(const std::uint8_t* p) noexcept {
  return loadWord<std::uint64_t, std::endian::little>(p);
}

/// Fibonacci hashing: the multiplier spreads the value over the upper bits.
inline std::uint32_t hashOf(std::uint32_t value, unsigned bits) noexcept {
  return (value * 0x9E3779B1U) >> (32 - bits);
}

/// Bits of the hashes for a stream of `size` bytes, at most `most`: as many entries as places.
inline unsigned hashBits(std::size_t size, unsigned most) noexcept {
  const std::size_t last = std::max<std::size_t>(size, 1) - 1;
  return std::clamp(static_cast<unsigned>(std::bit_width(last)), 8U, most);
}

/// How many bytes at `a` and `b` are equal, `known` of which are known to be, at most `limit`.
[[gnu::always_inline]] inline unsigned matchLength(const std::uint8_t* a, const std::uint8_t* b,
                                                   unsigned known, unsigned limit) noexcept {
  // Most matches end within the first word.
  std::uint64_t difference = load64(a + known) ^ load64(b + known);
  while (difference == 0) {
    known += 8;
    if (known >= limit) return limit;
    difference = load64(a + known) ^ load64(b + known);
  }
  const unsigned length = known + static_cast<unsigned>(std::countr_zero(difference)) / 8;
  return length < limit ? length : limit;
}

}  // namespace zantrel::zee

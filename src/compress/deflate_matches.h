#pragma once
// Comparing and hashing bytes of the window. Every place that is asked about has eight bytes that
// may be read, whether they belong to the data or not.

#include <bit>
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

/// How many bytes at `a` and `b` are equal, `known` of which are known to be, at most `limit`.
inline unsigned matchLength(const std::uint8_t* a, const std::uint8_t* b, unsigned known,
                            unsigned limit) noexcept {
  unsigned length = known;
  while (length + 8 <= limit) {
    const std::uint64_t difference = load64(a + length) ^ load64(b + length);
    if (difference != 0) return length + static_cast<unsigned>(std::countr_zero(difference)) / 8;
    length += 8;
  }
  while (length < limit && a[length] == b[length]) ++length;
  return length;
}

}  // namespace zantrel::zee

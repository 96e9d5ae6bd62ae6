#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"

namespace zantrel::inflate {

/// The bits of the stream, the next one lowest. Above `count` stand either zeros or the bits that
/// `next` points to, so that filling up is the same whatever is there.
struct BitReader {
  const std::uint8_t* begin;
  const std::uint8_t* next;
  const std::uint8_t* end;
  std::uint64_t bits;
  unsigned count;

  /// At least 56 bits, from 8 bytes that must be there.
  void fillWide() noexcept {
    bits |= loadWord<std::uint64_t, std::endian::little>(next) << count;
    next += (63 - count) >> 3;
    count |= 56;
  }
  void take(unsigned n) noexcept {
    bits >>= n;
    count -= n;
  }
  /// One byte more, if there is one.
  bool fillByte() noexcept {
    if (next == end) return false;
    bits |= std::uint64_t{*next++} << count;
    count += 8;
    return true;
  }
  /// At least 56 bits, or all that are left.
  void fill() noexcept {
    if (left() >= 8) {
      fillWide();
      return;
    }
    while (count < 56 && fillByte()) {
    }
  }
  /// True when there are n bits, at most 56.
  bool need(unsigned n) noexcept {
    if (count < n) fill();
    return count >= n;
  }
  /// Returns whole bytes of this input that were taken ahead.
  void giveBack() noexcept {
    const std::size_t whole =
        std::min<std::size_t>(count / 8, static_cast<std::size_t>(next - begin));
    next -= whole;
    count -= static_cast<unsigned>(8 * whole);
    bits &= (std::uint64_t{1} << count) - 1;
  }
  std::size_t left() const noexcept { return static_cast<std::size_t>(end - next); }
};

}  // namespace zantrel::inflate

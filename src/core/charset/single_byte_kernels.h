#pragma once
// The inner loops of the single-byte codecs. Each returns how many items it converted before the
// end or the first that it could not.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/charset/single_byte.h"
#include "platform/cpu_features.h"

namespace zantrel {

/// The way back of a page: the high byte of a unit picks a block of 256 cells, block 0 is empty.
struct SingleByteReverse {
  static constexpr std::size_t kWindows = 4;
  static constexpr std::size_t kWindowUnits = 128;

  explicit SingleByteReverse(const SingleByteTable& table);

  std::size_t cellOf(char16_t unit) const noexcept {
    return static_cast<std::size_t>(blockOf[unit >> 8]) * 256 + (unit & 0xFF);
  }

  const std::uint8_t* cellsOfWindow(std::uint16_t number) const noexcept {
    return cells.data() + cellOf(static_cast<char16_t>(number * kWindowUnits));
  }

  char16_t zeroUnit;  ///< what byte 00 stands for; every other zero cell is empty
  std::uint8_t blockOf[256] = {};
  std::vector<std::uint8_t> cells;
  /// The windows of 128 units that hold the most characters, as unit / 128, the fullest
  /// first: the vector loops keep them at hand.
  std::uint16_t window[kWindows] = {};
};

std::size_t decodeSinglePortable(const SingleByteTable& table, const std::uint8_t* in,
                                 std::size_t count, char16_t* out) noexcept;
std::size_t encodeSinglePortable(const SingleByteReverse& reverse, const char16_t* in,
                                 std::size_t count, std::uint8_t* out) noexcept;

#ifdef ZT_X86_64
/// All convert whole groups, of 32 items or of 64; what is left goes to the portable loops.
std::size_t decodeSingleAvx512(const SingleByteTable& table, const std::uint8_t* in,
                               std::size_t count, char16_t* out) noexcept;
/// For pages whose lower half is ASCII.
std::size_t decodeUpperHalfAvx2(const SingleByteTable& table, const std::uint8_t* in,
                                std::size_t count, char16_t* out) noexcept;
std::size_t encodeSingleAvx512(const SingleByteReverse& reverse, const char16_t* in,
                               std::size_t count, std::uint8_t* out) noexcept;
std::size_t encodeSingleAvx2(const SingleByteReverse& reverse, const char16_t* in,
                             std::size_t count, std::uint8_t* out) noexcept;
#endif

}  // namespace zantrel

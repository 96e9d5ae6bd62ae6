#pragma once
// The padding schemes of the block ciphers.

#include <cstddef>
#include <cstdint>

namespace zantrel {

/// By number, because applications set numbers. Any other number adds and removes nothing.
enum PaddingScheme : int {
  kPaddingCounted = 0,        ///< RFC 5652, section 6.3: N bytes of value N, always at least one
  kPaddingRandomCounted = 1,  ///< N - 1 random bytes, then N
  kPaddingRandom = 2,         ///< random bytes up to a whole block; none when it is whole
  kPaddingZeros = 3,
  kPaddingBlanks = 4,
};

/// How many bytes pad a text of `length` bytes. Blocks are 8 bytes where `blockSize` is 8, else 16.
std::size_t paddingSize(int scheme, std::size_t length, std::size_t blockSize) noexcept;

/// Writes `size` bytes of padding.
void writePadding(int scheme, std::uint8_t* padding, std::size_t size);

/// How many bytes decryption takes off a text of `length` bytes: what its last byte says, at most
/// everything. The padding itself is deliberately not looked at, so that a wrong one is no failure
/// that could be observed.
std::size_t removablePadding(int scheme, const std::uint8_t* text, std::size_t length) noexcept;

/// The most bytes that removablePadding() may take off.
std::size_t maxRemovablePadding(int scheme) noexcept;

}  // namespace zantrel

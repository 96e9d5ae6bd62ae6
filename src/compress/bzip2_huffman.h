#pragma once
// Prefix codes of bzip2: canonical, the shorter code first, within a length the smaller symbol
// first.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "compress/bzip2_bit_input.h"
#include "compress/bzip2_format.h"

namespace zantrel {

/// Lengths of an optimal code for these frequencies, none 0 and none above `maxLength`; at least
/// two and at most kMaxAlphabet symbols. Symbols that do not occur get a code too.
void bzip2CodeLengths(std::span<const std::uint32_t> frequencies, unsigned maxLength,
                      std::uint8_t* lengths);

/// The codes that belong to lengths, each in its low bits.
void bzip2Codes(std::span<const std::uint8_t> lengths, std::uint32_t* codes);

/// Finds symbols by their codes. Any lengths from 1 to 20 are taken: codes that no symbol has are
/// found out when they are met, and symbols that no code is left for are never met.
class Bzip2DecodeTable {
 public:
  static constexpr unsigned kNone = 0xFFFF;

  void build(std::span<const std::uint8_t> lengths) noexcept;

  /// Takes one code, of which kMaxCodeLength bits must be there; kNone if it is no symbol's.
  unsigned take(Bzip2BitInput& in) const noexcept {
    const unsigned entry = quick_[static_cast<std::size_t>(in.peek(kQuickBits))];
    if (entry == 0) [[unlikely]]
      return takeLong(in);
    in.drop(entry % 32);
    return entry / 32;
  }

 private:
  static constexpr unsigned kQuickBits = 10;

  unsigned takeLong(Bzip2BitInput& in) const noexcept;

  std::array<std::uint16_t, 1U << kQuickBits> quick_;  // symbol and length; 0: longer or none
  // For each length, all codes as numbers of kMaxCodeLength bits: those below the limit have it,
  // and the symbol of a code is that at its own number plus the offset.
  std::array<std::uint32_t, bzip2::kMaxCodeLength + 1> limit_;
  std::array<std::uint32_t, bzip2::kMaxCodeLength + 1> offset_;
  std::array<std::uint16_t, bzip2::kMaxAlphabet> symbols_;  // in the order of their codes
};

}  // namespace zantrel

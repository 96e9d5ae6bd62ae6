#pragma once
// The numbers of the deflate format (RFC 1951), for the compressor: symbols, their extra bits, and
// the limits of blocks and matches.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace zantrel::zee {

inline constexpr unsigned kMinMatch = 3;
inline constexpr unsigned kMaxMatch = 258;
inline constexpr std::size_t kMaxDistance = 32768;
inline constexpr std::size_t kMaxStored = 65535;  ///< bytes of one stored block

inline constexpr unsigned kEndOfBlock = 256;
inline constexpr unsigned kFirstLengthSymbol = 257;
inline constexpr unsigned kLengthSlots = 29;
inline constexpr unsigned kLiteralSymbols = 286;
inline constexpr unsigned kFixedLiteralSymbols = 288;  ///< the fixed code has two without meaning
inline constexpr unsigned kDistanceSymbols = 30;
inline constexpr unsigned kLengthCodeSymbols = 19;

inline constexpr unsigned kMaxCodeBits = 15;
inline constexpr unsigned kMaxLengthCodeBits = 7;

enum class BlockKind : unsigned { stored = 0, fixedCode = 1, dynamicCode = 2 };

/// In which order the lengths of the code length code are written (section 3.2.7).
inline constexpr std::array<std::uint8_t, kLengthCodeSymbols> kLengthCodeOrder = {
    16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};

/// A length symbol, less the first one, stands for 2^extra lengths from its base (section 3.2.5).
struct LengthSlots {
  std::array<std::uint16_t, kLengthSlots> base{};
  std::array<std::uint8_t, kLengthSlots> extra{};
  std::array<std::uint8_t, kMaxMatch + 1> of{};

  constexpr LengthSlots() {
    unsigned length = kMinMatch;
    for (unsigned slot = 0; slot < kLengthSlots - 1; ++slot) {
      extra[slot] = static_cast<std::uint8_t>(slot < 8 ? 0 : slot / 4 - 1);
      base[slot] = static_cast<std::uint16_t>(length);
      for (unsigned n = 1U << extra[slot]; n > 0 && length <= kMaxMatch; --n)
        of[length++] = static_cast<std::uint8_t>(slot);
    }
    base[kLengthSlots - 1] = kMaxMatch;  // the longest match has a symbol of its own
    of[kMaxMatch] = kLengthSlots - 1;
  }
};
inline constexpr LengthSlots kLengths;
static_assert(kLengths.base[27] == 227 && kLengths.extra[27] == 5 && kLengths.of[257] == 27);

/// The symbol of a distance from 1 to 32768: its highest bit and the one below.
constexpr unsigned distanceSlot(unsigned distance) noexcept {
  const unsigned d = distance - 1;
  if (d < 2) return d;
  const unsigned high = static_cast<unsigned>(std::bit_width(d)) - 1;
  return 2 * high + ((d >> (high - 1)) & 1);
}

constexpr unsigned distanceExtraBits(unsigned slot) noexcept {
  return slot < 2 ? 0 : slot / 2 - 1;
}
static_assert(distanceSlot(1) == 0 && distanceSlot(4) == 3 && distanceSlot(5) == 4 &&
              distanceSlot(24577) == 29 && distanceSlot(32768) == 29 &&
              distanceExtraBits(29) == 13);

}  // namespace zantrel::zee

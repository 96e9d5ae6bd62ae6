#pragma once
// The tables that inflate decodes by. The next bits of the stream index a primary table; codes
// longer than its index lead on to a subtable behind it. An entry packs all that a symbol needs:
//
//   bits  0- 5  bits to take in all, extra bits included
//         6- 7  literals it gives
//         8-11  length of the code, where the extra bits begin; width of a subtable's index
//        12-15  the flags below
//        16-31  a literal at 16, its copy at 24; a length less 3 at 24; a distance at 16;
//               a subtable's offset at 16

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zantrel::inflate {

using Entry = std::uint32_t;

inline constexpr Entry kMatch = 1U << 12;    ///< a length, after the literals if there are any
inline constexpr Entry kSpecial = 1U << 13;  ///< one of the two below, or bits that are no code
inline constexpr Entry kSubtable = 1U << 14;
inline constexpr Entry kEndOfBlock = 1U << 15;

inline constexpr unsigned kMaxCodeLength = 15;
inline constexpr unsigned kLiteralBits = 11;
inline constexpr unsigned kDistanceBits = 8;
inline constexpr unsigned kCodeLengthBits = 7;

inline constexpr std::size_t kLiteralSymbols = 288;  // the last two occur in the fixed code only
inline constexpr std::size_t kDistanceSymbols = 32;  // the last two likewise
inline constexpr std::size_t kCodeLengthSymbols = 19;

constexpr unsigned bitsOf(Entry entry) noexcept {
  return entry & 63;
}
constexpr unsigned literalsOf(Entry entry) noexcept {
  return (entry >> 6) & 3;
}
constexpr unsigned codeBitsOf(Entry entry) noexcept {
  return (entry >> 8) & 15;
}
constexpr unsigned lengthOf(Entry entry) noexcept {
  return (entry >> 24) + 3;
}
constexpr unsigned distanceOf(Entry entry) noexcept {
  return entry >> 16;
}
/// The n lowest bits; n is below 64.
constexpr std::uint64_t lowBits(std::uint64_t bits, unsigned n) noexcept {
  return bits & ((std::uint64_t{1} << n) - 1);
}
/// The extra bits of a symbol that begins `bits`.
constexpr unsigned extraOf(std::uint64_t bits, Entry entry) noexcept {
  return static_cast<unsigned>(lowBits(bits, bitsOf(entry)) >> codeBitsOf(entry));
}
/// The entry that a subtable has for the bits behind its prefix.
inline Entry inSubtable(const Entry* table, Entry pointer, std::uint64_t bits) noexcept {
  return table[(pointer >> 16) + lowBits(bits, codeBitsOf(pointer))];
}

/// Literals and lengths. The size is the most that any complete code of 286 symbols needs.
using LiteralTable = std::array<Entry, 2342>;
/// The same for 30 distances.
using DistanceTable = std::array<Entry, 402>;
using CodeLengthTable = std::array<Entry, std::size_t{1} << kCodeLengthBits>;
/// A primary table of literals and lengths whose entries give a second literal, or the length
/// behind a literal, where both codes fit the index.
using PairTable = std::array<Entry, std::size_t{1} << kLiteralBits>;

// Each builds a table from the lengths of the codes and answers false when they are over-subscribed
// or incomplete. A single code of one bit is allowed, and no distance at all; unused bits then
// decode as special.
bool buildLiteralTable(std::span<const std::uint8_t> lengths, LiteralTable& table) noexcept;
bool buildDistanceTable(std::span<const std::uint8_t> lengths, DistanceTable& table) noexcept;
bool buildCodeLengthTable(std::span<const std::uint8_t> lengths, CodeLengthTable& table) noexcept;

void buildPairTable(const LiteralTable& from, PairTable& pairs) noexcept;

struct Tables {
  LiteralTable literals{};
  DistanceTable distances{};
  PairTable pairs{};
};

/// Those of the fixed code (RFC 1951, section 3.2.6), pairs included.
const Tables& fixedTables() noexcept;

}  // namespace zantrel::inflate

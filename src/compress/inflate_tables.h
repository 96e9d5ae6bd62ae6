#pragma once
// The tables that inflate decodes by. The next bits of the stream index a primary table; codes
// longer than its index lead on to a subtable behind it. An entry packs all that a symbol needs:
//
//   bits  0- 7  bits to take in all, extra bits included
//         8-11  length of the code, where the extra bits begin; width of a subtable's index
//        12-13  the flags below
//        14-29  a literal at 14, its copy at 22; a length less 3 at 22
//        16-31  a distance, or a subtable's offset
//        30-31  literals that it gives

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zantrel::inflate {

using Entry = std::uint32_t;

inline constexpr Entry kMatch = 1U << 12;    ///< a length, after the literal if there is one
inline constexpr Entry kSpecial = 1U << 13;  ///< one of the two below, or bits that are no code
inline constexpr Entry kSubtable = kSpecial | kMatch;
inline constexpr Entry kEndOfBlock = kSpecial | 1U << 16;

inline constexpr unsigned kMaxCodeLength = 15;
inline constexpr unsigned kLiteralBits = 11;
inline constexpr unsigned kDistanceBits = 8;
inline constexpr unsigned kCodeLengthBits = 7;

inline constexpr std::size_t kLiteralSymbols = 288;  // the last two occur in the fixed code only
inline constexpr std::size_t kDistanceSymbols = 32;  // the last two likewise
inline constexpr std::size_t kCodeLengthSymbols = 19;

constexpr unsigned bitsOf(Entry entry) noexcept {
  return entry & 0xFF;
}
constexpr unsigned literalsOf(Entry entry) noexcept {
  return entry >> 30;
}
/// The literals, the first one lowest, below bits without meaning.
constexpr std::uint32_t literalsIn(Entry entry) noexcept {
  return entry >> 14;
}
constexpr unsigned codeBitsOf(Entry entry) noexcept {
  return (entry >> 8) & 15;
}
constexpr bool isSpecial(Entry entry) noexcept {
  return (entry & kSpecial) != 0;
}
constexpr bool isSubtable(Entry entry) noexcept {
  return (entry & kSubtable) == kSubtable;
}
constexpr bool isEndOfBlock(Entry entry) noexcept {
  return (entry & (kSubtable | kEndOfBlock)) == kEndOfBlock;
}
/// Literals and nothing else.
constexpr bool isLiteral(Entry entry) noexcept {
  return (entry & (kMatch | kSpecial)) == 0;
}
constexpr unsigned lengthOf(Entry entry) noexcept {
  return ((entry >> 22) & 0xFF) + 3;
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

/// The literals and lengths whose codes need no subtable, in the order of their codes, and the
/// pointers to subtables, as long as the index.
class ShortCodes {
 public:
  struct Item {
    std::uint32_t code;  ///< as the stream has it, its first bit lowest
    Entry entry;
  };

  void clear() noexcept {
    count_ = 0;
    starts_.fill(0);
  }
  /// The codes added from here on have this length.
  void begin(unsigned length) noexcept { starts_[length] = static_cast<std::uint16_t>(count_); }
  void add(std::uint32_t code, Entry entry) noexcept { items_[count_++] = {code, entry}; }

  std::span<const Item> ofLength(unsigned length) const noexcept {
    return {&items_[starts_[length]], &items_[starts_[length + 1]]};
  }
  /// The shortest length that has a code; there must be one.
  unsigned shortest() const noexcept {
    unsigned length = 1;
    while (length <= kLiteralBits && starts_[length + 1] == 0) ++length;
    return length;
  }

 private:
  std::size_t count_ = 0;
  std::array<std::uint16_t, kLiteralBits + 2> starts_{};
  std::array<Item, kLiteralSymbols + 1> items_{};
};

/// What a block is decoded by.
struct Tables {
  LiteralTable literals{};
  DistanceTable distances{};
  PairTable pairs{};
  ShortCodes shortCodes;
};

// Each builds a table from the lengths of the codes and answers false when they are over-subscribed
// or incomplete. A single code of one bit is allowed, and no distance at all; unused bits then
// decode as special.
bool buildLiteralTable(std::span<const std::uint8_t> lengths, Tables& tables) noexcept;
bool buildDistanceTable(std::span<const std::uint8_t> lengths, Tables& tables) noexcept;
bool buildCodeLengthTable(std::span<const std::uint8_t> lengths, CodeLengthTable& table) noexcept;

/// From the literals of the same tables. False, and nothing is built, where the codes are so long
/// that hardly any two fit the index together: single symbols are then decoded faster.
bool buildPairTable(Tables& tables) noexcept;

/// Those of the fixed code (RFC 1951, section 3.2.6), without pairs: no two of its codes fit.
const Tables& fixedTables() noexcept;

}  // namespace zantrel::inflate

#pragma once
// Code pages of one and two bytes a character: a lead byte picks a row of code points, the trail
// byte a cell in it. All rows lie in one pool, where rows that several pages share stand once. The
// way back is derived from the rows when a page is first written to, so that a page costs its rows
// only, and nothing at run time until it is used.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/charset/codec.h"
#include "core/charset/single_byte.h"

namespace zantrel {

namespace tables {
extern const char16_t kDoubleByteCells[];
}

struct DoubleByteRow {
  std::uint32_t offset;  ///< of the row's first cell among the cells
  std::uint8_t first;    ///< trail byte of that cell
  std::uint8_t count;    ///< 0: the byte is no lead byte
};

struct DoubleByteTable {
  const char16_t* single;     ///< 256 characters of single bytes; null when there are none
  const DoubleByteRow* rows;  ///< 256, by lead byte
  const char16_t* cells;      ///< characters of the pairs
  bool asciiLow;              ///< the bytes below 80 are ASCII (all pages but T.61)
  std::span<const std::uint16_t> preferred;  ///< codes to write although a lower one reads the same

  /// The character of a pair, kUndefined if it has none.
  char16_t character(std::uint8_t lead, std::uint8_t trail) const noexcept {
    const DoubleByteRow& row = rows[lead];
    const unsigned cell = static_cast<unsigned>(trail) - row.first;
    return cell < row.count ? cells[row.offset + cell] : kUndefined;
  }
};

/// From code units to codes: one cell a unit. Only the memory of the rows in use is ever touched.
struct DoubleByteReverse {
  std::uint16_t cells[0x10000];  ///< of a code, the first byte below and the second above
  bool asciiLow;

  /// The code of a unit: two bytes if above 0xFF, else one; 0 if it has none (or is U+0000).
  std::uint16_t code(char16_t unit) const noexcept { return swapped(cells[unit]); }

  /// From a code to its cell, and back. A second byte never is zero.
  static constexpr std::uint16_t swapped(unsigned code) noexcept {
    return static_cast<std::uint16_t>(code > 0xFF ? (code << 8) | (code >> 8) : code);
  }
};

/// Fills `reverse`, which is all zero before.
void deriveReverse(const DoubleByteTable& table, DoubleByteReverse& reverse) noexcept;

/// The way back of a page. It is derived by the first caller and stays, in storage that needs no
/// destructor and so outlives every static object.
template <class Page>
const DoubleByteReverse& reverseOf() noexcept {
  static DoubleByteReverse reverse;
  static const bool derived = (deriveReverse(Page::table, reverse), true);
  (void)derived;
  return reverse;
}

DecoderPtr makeDoubleByteDecoder(const DoubleByteTable& table);
EncoderPtr makeDoubleByteEncoder(const DoubleByteReverse& reverse);

}  // namespace zantrel

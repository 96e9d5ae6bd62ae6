// Double-byte code pages: Shift_JIS, GBK, Big5, EUC-KR, Johab and their relatives.
//
// Nearly all have ASCII in the lower half, so runs of ASCII are copied by vector; pairs go through
// one load of the row and one of the cell. A lead byte with a trail byte that cannot follow it is
// invalid alone, so that the byte behind it is read afresh; a pair without a character is invalid
// as a whole unless its trail byte is ASCII, which is kept.
//
// Encoding looks a unit up in the table that is derived for the way back. Characters beyond the
// basic plane are unmappable: none of these pages has any.

#include "core/charset/double_byte.h"

#include <memory>

#include "core/charset/double_byte_codec.h"

namespace zantrel {

void deriveReverse(const DoubleByteTable& table, DoubleByteReverse& reverse) noexcept {
  reverse.asciiLow = table.asciiLow;
  const auto offer = [&](char16_t unit, unsigned code) {
    if (unit == kUndefined) return;
    std::uint16_t& cell = reverse.cells[unit];
    if (cell == 0) cell = DoubleByteReverse::swapped(code);  // the lowest code wins
  };
  if (table.single != nullptr) {
    for (unsigned byte = 0; byte < 0x100; ++byte) offer(table.single[byte], byte);
  }
  for (unsigned lead = 0; lead < 0x100; ++lead) {
    const DoubleByteRow& row = table.rows[lead];
    for (unsigned k = 0; k < row.count; ++k) {
      offer(table.cells[row.offset + k], lead << 8 | (row.first + k));
    }
  }
  for (const std::uint16_t code : table.preferred) {
    const char16_t unit =
        table.character(static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code));
    reverse.cells[unit] = DoubleByteReverse::swapped(code);
  }
}

DecoderPtr makeDoubleByteDecoder(const DoubleByteTable& table) {
  return std::make_unique<DoubleByteDecoder<NoLongCodes>>(table);
}

EncoderPtr makeDoubleByteEncoder(const DoubleByteReverse& reverse) {
  return std::make_unique<DoubleByteEncoder<NoLongCodes>>(reverse);
}

}  // namespace zantrel

#pragma once
// What the reader and the writer of ISO-2022-JP share: how its codes and those of code page 932
// come out of each other.

#include <cstdint>

#include "core/charset/distinct_932.h"
#include "core/charset/iso2022.h"
#include "core/charset/tables/double_byte_tables.h"

namespace zantrel::iso2022jp {

inline constexpr std::uint8_t kEsc = 0x1B;
inline constexpr std::uint8_t kShiftOut = 0x0E;
inline constexpr std::uint8_t kShiftIn = 0x0F;

inline constexpr char16_t kFirstKana = 0xFF61;  // half-width; at 21, or A1 with the high bit
inline constexpr char16_t kLastKana = 0xFF9F;

// Rows and columns of JIS X 0208 are numbered as in the text, by graphic bytes.
inline constexpr std::uint8_t kFirstGraphic = 0x21;
inline constexpr std::uint8_t kLastGraphic = 0x7E;
inline constexpr unsigned kGraphics = kLastGraphic - kFirstGraphic + 1;

constexpr bool isGraphic(std::uint8_t byte) noexcept {
  return byte >= kFirstGraphic && byte <= kLastGraphic;
}

/// Row and column as the bytes of Shift_JIS.
constexpr unsigned shiftJisOf(unsigned row, unsigned column) noexcept {
  const unsigned half = (row - 0x21) / 2;
  const unsigned lead = half + (half < 0x1F ? 0x81 : 0xC1);
  const unsigned trail = row % 2 == 0 ? column + 0x7E : column + (column < 0x60 ? 0x1F : 0x20);
  return (lead << 8) | trail;
}

/// The reverse; 0 for what lies beyond row 94.
constexpr unsigned jisOf(unsigned shiftJis) noexcept {
  const unsigned lead = shiftJis >> 8;
  const unsigned trail = shiftJis & 0xFF;
  if (lead > 0xEF) return 0;
  const unsigned half = lead - (lead < 0xA0 ? 0x81 : 0xC1);
  if (trail >= 0x9F) return ((2 * half + 0x22) << 8) | (trail - 0x7E);
  return ((2 * half + 0x21) << 8) | (trail - (trail < 0x7F ? 0x1F : 0x20));
}
static_assert(shiftJisOf(0x21, 0x21) == 0x8140 && shiftJisOf(0x7E, 0x7E) == 0xEFFC);
static_assert(jisOf(0x8140) == 0x2121 && jisOf(0xEFFC) == 0x7E7E && jisOf(0x889F) == 0x3021);

/// The character (or own unit) of a code of 932.
inline char16_t characterOf(const DoubleByteTable& page, unsigned shiftJis) noexcept {
  return page.character(static_cast<std::uint8_t>(shiftJis >> 8),
                        static_cast<std::uint8_t>(shiftJis & 0xFF));
}

}  // namespace zantrel::iso2022jp

#pragma once
// Hexadecimal text: upper-case on writing, either case on reading. Output pointers need the room
// that the size functions name; buffer forms append. No input may lie inside its own output.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

/// The byte that two characters stand for. They are not validated, deliberately: below "A" a
/// character counts as its distance from "0", above by its distance from "A" in upper case plus
/// ten, and the result is taken modulo 256.
constexpr std::uint8_t unvalidatedHexPair(char high, char low) noexcept {
  const auto value = [](char character) -> unsigned {
    const unsigned c = static_cast<unsigned char>(character);
    return c < 'A' ? c - '0' : (c & 0xDFU) - 'A' + 10U;
  };
  return static_cast<std::uint8_t>(value(high) * 16 + value(low));
}

constexpr bool isHexDigit(char c) noexcept {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// Writes two digits a byte: `out` has room for 2 * in.size() characters. Returns those written.
std::size_t hexEncode(ByteSpan in, char* out) noexcept;
/// Reads pairs of unvalidated digits, skipping nothing; a last unpaired character is ignored. `out`
/// has room for in.size() / 2 bytes. Returns the bytes written.
std::size_t hexDecode(std::string_view in, std::uint8_t* out) noexcept;

/// Append; false when storage cannot be had.
bool hexEncode(ByteSpan in, StringBuffer& out);
bool hexDecode(std::string_view in, DataBuffer& out);

}  // namespace zantrel

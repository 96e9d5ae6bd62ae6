#pragma once
// Single characters of UTF-8, for code that walks through a text. Whole texts are converted by
// charset/encoding_convert.h.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zantrel {

inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

struct Utf8Character {
  char32_t value;    ///< kNoCharacter where the bytes are not well-formed UTF-8
  std::size_t size;  ///< bytes to step over, at least 1
};

/// The character at the start of a text that is not empty.
constexpr Utf8Character decodeUtf8(std::string_view text) noexcept {
  const auto byte = [text](std::size_t i) -> std::uint32_t {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
  };
  const std::uint32_t lead = byte(0);
  if (lead < 0x80) return {static_cast<char32_t>(lead), 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  std::uint32_t value = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return {kNoCharacter, 1};
    value = value << 6 | (byte(i) & 0x3FU);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (lead < 0xC2 || lead > 0xF4 || value < kSmallest[size] || value > 0x10FFFF || surrogate) {
    return {kNoCharacter, 1};
  }
  return {static_cast<char32_t>(value), size};
}

/// Writes a character to `out` (room for 4 bytes); returns how many bytes it took, 0 for a number
/// that is no character.
constexpr std::size_t encodeUtf8(char32_t value, char* out) noexcept {
  if (value < 0x80) {
    out[0] = static_cast<char>(value);
    return 1;
  }
  if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
  const std::size_t size = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
  constexpr unsigned kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (std::size_t i = size - 1; i > 0; --i) {
    out[i] = static_cast<char>(0x80U | (value & 0x3FU));
    value >>= 6;
  }
  out[0] = static_cast<char>(kLead[size] | value);
  return size;
}

}  // namespace zantrel

#pragma once
// What names and headers need of ASCII: case and white space, whatever the locale is.

#include <string_view>

namespace zantrel {

/// Upper-case ASCII letters as lower-case ones; other bytes as they are.
constexpr char asciiLower(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// What is trimmed wherever the library trims.
inline constexpr std::string_view kTrimmedBlanks = " \t\r\n";

/// The text without blanks, tabs, CR and LF at its ends.
constexpr std::string_view trimmed(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(kTrimmedBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kTrimmedBlanks) - first + 1);
}

}  // namespace zantrel

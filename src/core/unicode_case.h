#pragma once
// Simple case mappings and simple case folding of Unicode: one character for one, whatever the
// language. "ß" therefore has no upper case, and the dotless "ı" equals no "i".

#include <cstdint>
#include <span>
#include <string_view>

namespace zantrel {

class StringBuffer;

namespace unicode_case {

/// Characters first, first + step, ... last map to themselves plus delta.
struct Range {
  char32_t first;
  char32_t last;
  std::int32_t delta;
  std::uint8_t step;
};

extern const std::span<const Range> kUpper;
extern const std::span<const Range> kLower;
/// Where folding differs from the lower case; a delta of 0 says that a character folds to itself.
extern const std::span<const Range> kFold;

}  // namespace unicode_case

char32_t toUpperCase(char32_t c) noexcept;
char32_t toLowerCase(char32_t c) noexcept;
/// What two characters have in common that differ in case only.
char32_t foldCase(char32_t c) noexcept;

/// Append the mapped form of UTF-8 text; bytes that are not well-formed are copied. False when
/// storage cannot be had.
bool appendUpperCase(std::string_view utf8, StringBuffer& out);
bool appendLowerCase(std::string_view utf8, StringBuffer& out);
bool appendFoldedCase(std::string_view utf8, StringBuffer& out);

bool equalsIgnoreCase(std::string_view a, std::string_view b) noexcept;

}  // namespace zantrel

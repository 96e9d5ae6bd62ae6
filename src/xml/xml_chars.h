#pragma once
// Which characters XML 1.0 (fifth edition) allows, at all and in names.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zantrel {

/// [2] Char, beyond what UTF-8 can write anyway.
constexpr bool isXmlCharacter(char32_t c) noexcept {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c < 0xD800 || (c > 0xDFFF && c < 0xFFFE) || (c > 0xFFFF && c <= 0x10FFFF);
}

/// The first place where a text is not UTF-8 or has a character that XML does not allow; its end
/// when there is none.
const char* findIllegalCharacter(std::string_view text) noexcept;

// Classes of ASCII characters. Bytes of longer characters have none.
enum XmlCharClass : std::uint8_t { kXmlSpace = 1, kXmlNameStart = 2, kXmlName = 4, kXmlPubid = 8 };

inline constexpr std::array<std::uint8_t, 256> kXmlCharClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  const auto add = [&classes](std::string_view characters, int which) {
    for (const char c : characters) {
      auto& one = classes[static_cast<std::uint8_t>(c)];
      one = static_cast<std::uint8_t>(one | which);
    }
  };
  add(" \t\r\n", kXmlSpace);
  add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", kXmlNameStart | kXmlName | kXmlPubid);
  add(":_", kXmlNameStart | kXmlName | kXmlPubid);
  add("-.0123456789", kXmlName | kXmlPubid);
  add(" \r\n'()+,/=?;!*#@$%", kXmlPubid);
  return classes;
}();

inline bool isXmlClass(char c, unsigned which) noexcept {
  return (kXmlCharClasses[static_cast<std::uint8_t>(c)] & which) != 0;
}

constexpr bool isXmlQuote(char c) noexcept {
  return c == '"' || c == '\'';
}

/// Behind what goes on with a name, from the second character on or, for a name token, from the
/// first.
const char* skipXmlNameRest(const char* at, const char* end) noexcept;
/// Behind a name that begins with a character that is not ASCII; `at` when none does.
const char* skipXmlNameBeyondAscii(const char* at, const char* end) noexcept;

/// Behind the name that begins here; `at` when none does.
inline const char* skipXmlName(const char* at, const char* end) noexcept {
  if (at == end) return at;
  if (!isXmlClass(*at, kXmlNameStart)) return skipXmlNameBeyondAscii(at, end);
  do ++at;
  while (at != end && isXmlClass(*at, kXmlName));
  return at == end || static_cast<std::uint8_t>(*at) < 0x80 ? at : skipXmlNameRest(at, end);
}

}  // namespace zantrel

// Character references: HTML standard, sections "Named character references" and "Numeric character
// reference end state"; XML 1.0 section 4.6 for the five predefined entities.
//
// Decoding copies what lies between ampersands and looks names up in a sorted table of the
// standard's list (html_entity_table.cpp). Names are at most 31 letters long, so a lookup never
// looks further and the work stays linear.

#include "core/encode/html_entities.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "core/encode/buffer_fill.h"
#include "core/encode/html_entity_table.h"
#include "core/string_buffer.h"
#include "core/utf8.h"

namespace zantrel {
namespace {

constexpr std::size_t kMaxNameLength = 31;
constexpr std::size_t kMaxLegacyLength = 6;
constexpr std::uint32_t kReplacement = 0xFFFD;

// Windows-1252 0x80..0x9F; the five undefined cells stay the C1 controls.
constexpr std::array<std::uint16_t, 32> kC1Meanings = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

char* writeUtf8(std::uint32_t c, char* out) noexcept {
  return out + encodeUtf8(static_cast<char32_t>(c), out);
}

constexpr bool isDecimal(char c) noexcept {
  return c >= '0' && c <= '9';
}

constexpr bool isNameChar(char c) noexcept {
  return isDecimal(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

const HtmlEntity* findEntity(std::string_view name) noexcept {
  const HtmlEntity* const end = kHtmlEntities + kHtmlEntityCount;
  const HtmlEntity* const found = std::lower_bound(
      kHtmlEntities, end, name,
      [](const HtmlEntity& entity, std::string_view key) { return htmlEntityName(entity) < key; });
  return found != end && htmlEntityName(*found) == name ? found : nullptr;
}

char* writeEntity(const HtmlEntity& entity, char* out) noexcept {
  out = writeUtf8(entity.first, out);
  return entity.second == 0 ? out : writeUtf8(entity.second, out);
}

// `in` starts behind "&#". Returns how much of it belongs to the reference; 0 if it is none.
std::size_t decodeNumber(std::string_view in, char*& out) noexcept {
  const bool hexadecimal = !in.empty() && (in[0] == 'x' || in[0] == 'X');
  std::size_t i = hexadecimal ? 1 : 0;
  const std::size_t firstDigit = i;
  std::uint32_t number = 0;
  for (; i < in.size(); ++i) {
    const char c = in[i];
    const char lower = static_cast<char>(c | 0x20);
    std::uint32_t digit = 0;
    if (isDecimal(c)) {
      digit = static_cast<std::uint32_t>(c - '0');
    } else if (hexadecimal && lower >= 'a' && lower <= 'f') {
      digit = static_cast<std::uint32_t>(lower - 'a' + 10);
    } else {
      break;
    }
    number = std::min<std::uint32_t>(number * (hexadecimal ? 16 : 10) + digit, 0x110000);
  }
  if (i == firstDigit) return 0;
  if (number == 0 || number > 0x10FFFF || (number >= 0xD800 && number < 0xE000)) {
    number = kReplacement;
  } else if (number >= 0x80 && number < 0xA0) {
    number = kC1Meanings[number - 0x80];
  }
  out = writeUtf8(number, out);
  return i < in.size() && in[i] == ';' ? i + 1 : i;
}

// `in` starts behind "&". Returns how much of it belongs to the reference; 0 if it is none.
std::size_t decodeName(std::string_view in, char*& out) noexcept {
  std::size_t length = 0;
  while (length < in.size() && length <= kMaxNameLength && isNameChar(in[length])) ++length;
  if (length < in.size() && in[length] == ';') {
    if (const HtmlEntity* entity = findEntity(in.substr(0, length)); entity != nullptr) {
      out = writeEntity(*entity, out);
      return length + 1;
    }
  }
  for (length = std::min(length, kMaxLegacyLength); length >= 2; --length) {
    const HtmlEntity* entity = findEntity(in.substr(0, length));
    if (entity == nullptr || entity->legacy == 0) continue;
    out = writeEntity(*entity, out);
    return length;
  }
  return 0;
}

std::size_t decodeHtml(std::string_view in, char* out) noexcept {
  const char* const start = out;
  while (!in.empty()) {
    const std::size_t run = std::min(in.find('&'), in.size());
    std::memcpy(out, in.data(), run);
    out += run;
    in.remove_prefix(run);
    if (in.empty()) break;
    const std::string_view rest = in.substr(1);
    const bool numeric = !rest.empty() && rest[0] == '#';
    const std::size_t used = numeric ? decodeNumber(rest.substr(1), out) : decodeName(rest, out);
    if (used == 0) *out++ = '&';
    in.remove_prefix(1 + (numeric && used > 0 ? 1U : 0U) + used);
  }
  return static_cast<std::size_t>(out - start);
}

bool entityEncode(std::string_view in, int base, StringBuffer& out) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  const auto others = static_cast<std::uint64_t>(
      in.size() - static_cast<std::size_t>(std::count_if(in.begin(), in.end(), isAscii)));
  // The longest form a byte can have is "&#65533;" or "&#xFFFD;", for a malformed one.
  return appendFilled(out, clampSize(in.size() + others * 7), [&](char* room) {
    char* end = room;
    std::string_view rest = in;
    while (!rest.empty()) {
      const auto run = static_cast<std::size_t>(
          std::find_if_not(rest.begin(), rest.end(), isAscii) - rest.begin());
      std::memcpy(end, rest.data(), run);
      end += run;
      rest.remove_prefix(run);
      if (rest.empty()) break;
      const Utf8Character next = decodeUtf8(rest);
      rest.remove_prefix(next.size);
      const std::uint32_t character = next.value == kNoCharacter ? kReplacement : next.value;
      *end++ = '&';
      *end++ = '#';
      if (base == 16) *end++ = 'x';
      char* const digits = end;
      end = std::to_chars(end, end + 8, character, base).ptr;
      std::transform(digits, end, digits,
                     [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
      *end++ = ';';
    }
    return static_cast<std::size_t>(end - room);
  });
}

struct XmlSpecial {
  char character;
  std::string_view entity;
};

constexpr std::array<XmlSpecial, 5> kXmlSpecials = {
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}}};

}  // namespace

bool htmlEntityDecode(std::string_view in, StringBuffer& out) {
  // Only "&nLt;" and "&nGt;" and their like grow, from five characters to six bytes.
  return appendFilled(out, clampSize(std::uint64_t{in.size()} + in.size() / 5),
                      [in](char* room) { return decodeHtml(in, room); });
}

bool entityEncodeHex(std::string_view in, StringBuffer& out) {
  return entityEncode(in, 16, out);
}

bool entityEncodeDec(std::string_view in, StringBuffer& out) {
  return entityEncode(in, 10, out);
}

bool xmlSpecialEncode(std::string_view in, StringBuffer& out) {
  std::uint64_t size = in.size();
  for (const char c : in)
    for (const XmlSpecial& special : kXmlSpecials)
      if (c == special.character) size += special.entity.size() - 1;
  return appendFilled(out, clampSize(size), [in](char* room) {
    char* end = room;
    for (const char c : in) {
      const auto* const special =
          std::find_if(kXmlSpecials.begin(), kXmlSpecials.end(),
                       [c](const XmlSpecial& candidate) { return candidate.character == c; });
      if (special == kXmlSpecials.end()) {
        *end++ = c;
      } else {
        end = std::copy(special->entity.begin(), special->entity.end(), end);
      }
    }
    return static_cast<std::size_t>(end - room);
  });
}

bool xmlSpecialDecode(std::string_view in, StringBuffer& out) {
  return appendFilled(out, in.size(), [in](char* room) {
    char* end = room;
    std::string_view rest = in;
    while (!rest.empty()) {
      const std::size_t run = std::min(rest.find('&'), rest.size());
      end = std::copy_n(rest.data(), run, end);
      rest.remove_prefix(run);
      if (rest.empty()) break;
      const auto* const special = std::find_if(
          kXmlSpecials.begin(), kXmlSpecials.end(),
          [rest](const XmlSpecial& candidate) { return rest.starts_with(candidate.entity); });
      const bool known = special != kXmlSpecials.end();
      *end++ = known ? special->character : '&';
      rest.remove_prefix(known ? special->entity.size() : 1);
    }
    return static_cast<std::size_t>(end - room);
  });
}

}  // namespace zantrel

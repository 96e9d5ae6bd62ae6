#include "xml/xml_chars.h"

#include <algorithm>
#include <cstring>

#include "core/utf8.h"

namespace zantrel {

namespace {

struct Range {
  char32_t first, last;
};

// [4] NameStartChar without ASCII.
constexpr Range kNameStart[] = {{0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},
                                {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},
                                {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF},
                                {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
// [4a] What NameChar adds.
constexpr Range kNameOnly[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t N>
bool isIn(const Range (&ranges)[N], char32_t c) noexcept {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [c](const Range& range) { return c >= range.first && c <= range.last; });
}

bool isNameStart(char32_t c) noexcept {
  return isIn(kNameStart, c);
}

bool isPlain(std::uint8_t byte) noexcept {
  return (byte >= ' ' && byte < 0x80) || byte == '\t' || byte == '\n' || byte == '\r';
}

// Most text is plain ASCII: 16 bytes at a time, which compilers turn into vector instructions.
const char* skipPlain(const char* at, const char* end) noexcept {
  using Bytes = std::uint8_t __attribute__((vector_size(16)));
  constexpr std::size_t kStep = sizeof(Bytes);
  for (; static_cast<std::size_t>(end - at) >= kStep; at += kStep) {
    Bytes bytes;
    std::memcpy(&bytes, at, kStep);
    // Tab, LF and CR become blanks; then what is below a blank or above ASCII wraps beyond 0x5F.
    const Bytes space = (bytes == '\t') | (bytes == '\n') | (bytes == '\r');
    const Bytes odd = (bytes | (space & ' ')) - ' ' >= std::uint8_t{0x80 - ' '};
    std::uint64_t halves[2];
    std::memcpy(halves, &odd, kStep);
    if ((halves[0] | halves[1]) != 0) break;
  }
  while (at != end && isPlain(static_cast<std::uint8_t>(*at))) ++at;
  return at;
}

}  // namespace

const char* findIllegalCharacter(std::string_view text) noexcept {
  const char* at = text.data();
  const char* const end = at + text.size();
  while ((at = skipPlain(at, end)) != end) {
    do {
      const auto byte = static_cast<std::uint8_t>(*at);
      const bool isTwo = byte >= 0xC2 && byte <= 0xDF && end - at >= 2;
      if (isTwo && (at[1] & 0xC0) == 0x80) {  // all of them are allowed
        at += 2;
        continue;
      }
      const Utf8Character c = decodeUtf8({at, static_cast<std::size_t>(end - at)});
      if (!isXmlCharacter(c.value)) return at;
      at += c.size;
    } while (at != end && static_cast<std::uint8_t>(*at) >= 0x80);
  }
  return end;
}

const char* skipXmlNameRest(const char* at, const char* end) noexcept {
  while (at != end) {
    if (isXmlClass(*at, kXmlName)) {
      ++at;
      continue;
    }
    const Utf8Character c = decodeUtf8({at, static_cast<std::size_t>(end - at)});
    if (!isNameStart(c.value) && !isIn(kNameOnly, c.value)) break;
    at += c.size;
  }
  return at;
}

const char* skipXmlNameBeyondAscii(const char* at, const char* end) noexcept {
  const Utf8Character c = decodeUtf8({at, static_cast<std::size_t>(end - at)});
  return isNameStart(c.value) ? skipXmlNameRest(at + c.size, end) : at;
}

}  // namespace zantrel

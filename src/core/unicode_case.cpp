#include "core/unicode_case.h"

#include <algorithm>

#include "core/string_buffer.h"
#include "core/text_search.h"
#include "core/utf8.h"

namespace zantrel {
namespace {

using unicode_case::Range;

/// The range that a character lies in, or null.
const Range* findRange(std::span<const Range> ranges, char32_t c) noexcept {
  const auto range =
      std::lower_bound(ranges.begin(), ranges.end(), c,
                       [](const Range& r, char32_t value) { return r.last < value; });
  if (range == ranges.end() || c < range->first || (c - range->first) % range->step != 0) {
    return nullptr;
  }
  return &*range;
}

char32_t move(char32_t c, const Range* range) noexcept {
  return range != nullptr ? static_cast<char32_t>(static_cast<std::int32_t>(c) + range->delta) : c;
}

template <char32_t (*kMap)(char32_t) noexcept>
bool appendMapped(std::string_view utf8, StringBuffer& out) {
  while (!utf8.empty()) {
    char bytes[512];
    std::size_t used = 0;
    while (!utf8.empty() && used + 4 <= sizeof bytes) {
      const Utf8Character c = decodeUtf8(utf8);
      if (c.value == kNoCharacter) {
        bytes[used++] = utf8.front();
      } else {
        used += encodeUtf8(kMap(c.value), bytes + used);
      }
      utf8.remove_prefix(c.size);
    }
    if (!out.append(bytes, used)) return false;
  }
  return true;
}

}  // namespace

char32_t toUpperCase(char32_t c) noexcept {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 32 : c;
  return move(c, findRange(unicode_case::kUpper, c));
}

char32_t toLowerCase(char32_t c) noexcept {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  return move(c, findRange(unicode_case::kLower, c));
}

char32_t foldCase(char32_t c) noexcept {
  if (c < 0x80) return toLowerCase(c);
  const Range* const range = findRange(unicode_case::kFold, c);
  return range != nullptr ? move(c, range) : toLowerCase(c);
}

bool appendUpperCase(std::string_view utf8, StringBuffer& out) {
  return appendMapped<toUpperCase>(utf8, out);
}

bool appendLowerCase(std::string_view utf8, StringBuffer& out) {
  return appendMapped<toLowerCase>(utf8, out);
}

bool appendFoldedCase(std::string_view utf8, StringBuffer& out) {
  // No character takes more than half as much again when folded.
  return out.reserve(utf8.size() + utf8.size() / 2) && appendMapped<foldCase>(utf8, out);
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) noexcept {
  while (!a.empty() && !b.empty()) {
    const Utf8Character x = decodeUtf8(a);
    const Utf8Character y = decodeUtf8(b);
    const bool bothCharacters = x.value != kNoCharacter && y.value != kNoCharacter;
    if (bothCharacters ? foldCase(x.value) != foldCase(y.value) : a.front() != b.front()) {
      return false;
    }
    a.remove_prefix(x.size);
    b.remove_prefix(y.size);
  }
  return a.empty() && b.empty();
}

}  // namespace zantrel

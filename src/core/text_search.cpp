#include "core/text_search.h"

#include <algorithm>

namespace zantrel {
namespace {

// Trying a short needle at every place costs a bounded number of steps a byte; for longer ones the
// borders of its prefixes keep the search linear.
constexpr std::size_t kShortNeedle = 16;

}  // namespace

bool equalsAsciiNoCase(std::string_view a, std::string_view b) noexcept {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return asciiLower(x) == asciiLower(y);
         });
}

TextSearcher::TextSearcher(std::string_view needle, Case letterCase)
    : needle_(needle), ignoreCase_(letterCase == Case::IgnoreAscii) {
  if (needle.size() <= kShortNeedle) return;
  border_.resize(needle.size());
  std::uint32_t border = 0;
  for (std::size_t i = 1; i < needle.size(); ++i) {
    while (border > 0 && !same(needle[i], needle[border])) border = border_[border - 1];
    if (same(needle[i], needle[border])) ++border;
    border_[i] = border;
  }
}

std::size_t TextSearcher::find(std::string_view text, std::size_t from) const noexcept {
  if (needle_.empty() || from > text.size() || text.size() - from < needle_.size()) {
    return std::string_view::npos;
  }
  return border_.empty() ? findShort(text, from) : findLong(text, from);
}

std::size_t TextSearcher::findShort(std::string_view text, std::size_t from) const noexcept {
  if (!ignoreCase_) return text.find(needle_, from);
  const std::size_t last = text.size() - needle_.size();
  for (std::size_t at = from; at <= last; ++at) {
    if (equalsAsciiNoCase(text.substr(at, needle_.size()), needle_)) return at;
  }
  return std::string_view::npos;
}

std::size_t TextSearcher::findLong(std::string_view text, std::size_t from) const noexcept {
  std::size_t matched = 0;
  for (std::size_t i = from; i < text.size(); ++i) {
    while (matched > 0 && !same(text[i], needle_[matched])) matched = border_[matched - 1];
    if (same(text[i], needle_[matched])) ++matched;
    if (matched == needle_.size()) return i + 1 - matched;
  }
  return std::string_view::npos;
}

}  // namespace zantrel

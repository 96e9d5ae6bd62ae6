#include "core/wildcard_pattern.h"

#include <new>

#include "core/unicode_case.h"

namespace zantrel {
namespace {

void fold(std::string_view text, StringBuffer& out) {
  out.clear();
  if (!appendFoldedCase(text, out)) throw std::bad_alloc();
}

}  // namespace

WildcardPattern::WildcardPattern(std::string_view pattern, Case letterCase)
    : ignoreCase_(letterCase == Case::Ignore),
      pattern_(std::string_view()),
      folded_(std::string_view()) {
  if (ignoreCase_)
    fold(pattern, pattern_);
  else if (!pattern_.setString(pattern))
    throw std::bad_alloc();
  std::string_view rest = pattern_.view();
  std::size_t star = rest.find('*');
  first_ = rest.substr(0, star);
  while (star != rest.npos) {
    hasWildcard_ = true;
    rest.remove_prefix(star + 1);
    star = rest.find('*');
    if (star != rest.npos && star != 0) between_.emplace_back(rest.substr(0, star));
  }
  if (hasWildcard_) last_ = rest;
  isAll_ = hasWildcard_ && first_.empty() && last_.empty() && between_.empty();
}

bool WildcardPattern::matches(std::string_view text) const {
  if (isAll_) return true;
  if (!ignoreCase_) return matchesFolded(text);
  fold(text, folded_);
  return matchesFolded(folded_.view());
}

// The leftmost place for each part is as good as any other: what is left for the later ones is
// longest.
bool WildcardPattern::matchesFolded(std::string_view text) const {
  if (!hasWildcard_) return text == first_;
  if (text.size() < first_.size() + last_.size()) return false;
  if (!text.starts_with(first_) || !text.ends_with(last_)) return false;
  const std::string_view middle =
      text.substr(first_.size(), text.size() - first_.size() - last_.size());
  std::size_t at = 0;
  for (const TextSearcher& part : between_) {
    const std::size_t found = part.find(middle, at);
    if (found == middle.npos) return false;
    at = found + part.size();
  }
  return true;
}

}  // namespace zantrel

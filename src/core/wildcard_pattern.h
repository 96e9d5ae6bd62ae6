#pragma once
// Texts with "*" in them, as users give them to say what to look for.

#include <string_view>
#include <vector>

#include "core/string_buffer.h"
#include "core/text_search.h"

namespace zantrel {

/// Matches whole texts: "*" stands for any characters or none, and every other one for itself, so
/// that a pattern without "*" is equal to what it matches. In linear time whatever both look like.
class WildcardPattern final {
 public:
  enum class Case { Sensitive, Ignore };

  /// Copies the pattern, which is UTF-8. Where case is ignored, characters are the same that are so
  /// to equalsIgnoreCase() of core/unicode_case.h. Throws std::bad_alloc.
  explicit WildcardPattern(std::string_view pattern, Case letterCase = Case::Sensitive);
  WildcardPattern(const WildcardPattern&) = delete;
  WildcardPattern& operator=(const WildcardPattern&) = delete;

  /// Throws std::bad_alloc.
  bool matches(std::string_view text) const;
  /// Whether there is nothing that it does not match.
  bool matchesAll() const { return isAll_; }

 private:
  bool matchesFolded(std::string_view text) const;

  bool ignoreCase_;
  bool isAll_ = false;
  StringBuffer pattern_;               // the parts below are slices of it
  std::string_view first_;             // before the first "*"
  std::string_view last_;              // behind the last one
  bool hasWildcard_ = false;           // else all is in `first_`
  std::vector<TextSearcher> between_;  // in their order
  mutable StringBuffer folded_;        // kept from call to call for its memory
};

}  // namespace zantrel

#pragma once
// Finds a text in a text, in linear time whatever both look like.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/ascii_text.h"

namespace zantrel {

bool equalsAsciiNoCase(std::string_view a, std::string_view b) noexcept;

class TextSearcher {
 public:
  enum class Case { Sensitive, IgnoreAscii };

  /// The needle must outlive the searcher.
  explicit TextSearcher(std::string_view needle, Case letterCase = Case::Sensitive);

  /// Where the needle first stands at or behind `from`, or npos. An empty needle is never found.
  std::size_t find(std::string_view text, std::size_t from = 0) const noexcept;
  /// Of the needle.
  std::size_t size() const noexcept { return needle_.size(); }

 private:
  bool same(char a, char b) const noexcept {
    return a == b || (ignoreCase_ && asciiLower(a) == asciiLower(b));
  }
  std::size_t findShort(std::string_view text, std::size_t from) const noexcept;
  std::size_t findLong(std::string_view text, std::size_t from) const noexcept;

  std::string_view needle_;
  bool ignoreCase_;
  std::vector<std::uint32_t> border_;  // of each prefix of a long needle (Knuth, Morris, Pratt)
};

}  // namespace zantrel

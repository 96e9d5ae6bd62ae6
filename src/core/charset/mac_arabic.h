#pragma once
// Text of the Macintosh Arabic page, from the order and codes of the screen to those of the table.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/bytes.h"

namespace zantrel {

/// Rewrites code page 10004 ahead of its table: runs of right-to-left characters are reversed to
/// logical order, and the right-to-left twins of ASCII characters (spaces, punctuation, the
/// Arabic-Indic digits) become those characters. As many bytes come out as go in.
class MacArabicRewriter {
 public:
  /// A run longer than this is reversed in parts, so that memory stays bounded.
  static constexpr std::size_t kLongestRun = std::size_t{1} << 20;

  /// Appends to `out` what is final. A run at the end of a piece waits for the next one, unless
  /// this is the last.
  void rewrite(ByteSpan in, bool last, std::vector<std::uint8_t>& out);

 private:
  void endRun(std::vector<std::uint8_t>& out);

  std::vector<std::uint8_t> run_;
};

}  // namespace zantrel

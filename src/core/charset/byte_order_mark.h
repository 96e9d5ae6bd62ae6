#pragma once
// The marks at the start of a text that tell its form of Unicode and its byte order.

#include <cstddef>

#include "core/bytes.h"

namespace zantrel {

/// A Unicode byte-order mark at the start of a text.
struct ByteOrderMark {
  int codePage = 0;        ///< 65001, 1200, 1201, 65005 or 65006; 0 when there is no mark
  std::size_t length = 0;  ///< bytes
};

/// The mark at the start of `text`. FF FE 00 00 is UTF-32, not UTF-16 with a zero character, unless
/// the text is said to be UTF-16 (`named` 1200 or 1201).
ByteOrderMark findByteOrderMark(ByteSpan text, int named = 0) noexcept;

/// The bytes of a code page's mark; empty for a page that has none, as all but those of Unicode.
ByteSpan byteOrderMarkOf(int codePage) noexcept;

}  // namespace zantrel

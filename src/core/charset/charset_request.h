#pragma once

#include <string_view>

namespace zantrel {

/// A charset name as callers give it: "bom:" in front, in any case, asks for a byte-order mark.
struct CharsetRequest {
  std::string_view name;  ///< trimmed, without the prefix; a part of the text that was parsed
  int codePage = 0;       ///< 0 for an unknown name
  bool byteOrderMark = false;

  static CharsetRequest parse(std::string_view text);
};

}  // namespace zantrel

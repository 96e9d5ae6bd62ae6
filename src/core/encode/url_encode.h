#pragma once
// URL encoding in the form that HTML forms post: blanks as "+", everything but ASCII letters and
// digits as "%" and two hexadecimal digits.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

class UrlEncode final {
 public:
  static constexpr std::size_t kSlack = 64;

  /// Characters that encoding these bytes yields.
  static std::size_t encodedSize(ByteSpan in) noexcept;
  /// Writes them; `out` has room for encodedSize() + kSlack, which may be overwritten in passing.
  /// Returns the characters written. "-", ".", "_" and "~" are escaped as well.
  static std::size_t encode(ByteSpan in, char* out) noexcept;
  /// Never fails; `out` has room for in.size() bytes. The two characters behind a "%" are not
  /// validated; a "%" with fewer than two behind it ends the decoding. Returns the bytes written.
  static std::size_t decode(std::string_view in, std::uint8_t* out) noexcept;

  /// Append; false when storage cannot be had.
  static bool encode(ByteSpan in, StringBuffer& out);
  static bool decode(std::string_view in, DataBuffer& out);
};

}  // namespace zantrel

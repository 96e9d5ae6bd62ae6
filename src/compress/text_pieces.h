#pragma once

#include <optional>
#include <string_view>

#include "core/bytes.h"
#include "core/charset/encoding_convert.h"
#include "core/xstring.h"

namespace zantrel {

class LogBase;

/// Bytes in a charset that become text, in pieces that may be cut within a character.
class TextPieces final {
 public:
  /// Starts a text in a charset; empty names utf-8. False, and logged, for an unknown one.
  bool start(std::string_view charset, LogBase& log);
  /// Appends the characters that are complete. With the last piece what was not valid is logged.
  /// False, and logged, when none was started or storage cannot be had.
  bool add(ByteSpan bytes, bool last, XString& out, LogBase& log);

 private:
  bool decode(ByteSpan bytes, bool last, DataBuffer& utf8);

  std::optional<CharsetStream> stream_;
  std::optional<CharsetStream> fromUtf16_;  ///< behind it, where the charset is UTF-8
};

/// The same in one piece.
bool textOfBytes(ByteSpan bytes, std::string_view charset, XString& out, LogBase& log);

}  // namespace zantrel

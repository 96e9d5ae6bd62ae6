#pragma once
// UU encoding: a "begin" line with file mode and name, lines of up to 45 bytes, and "end".

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

class Uu final {
 public:
  /// Appends a whole block. Lines end with CRLF and zero bits are written as "`", which survives
  /// mail transport better than a blank. Control characters in mode and name (UTF-8) are left out,
  /// so that they cannot break the block; an empty mode or name becomes "644" or "file.dat". False
  /// when storage cannot be had.
  static bool encode(ByteSpan in, std::string_view mode, std::string_view fileName,
                     StringBuffer& out);

  /// Appends the bytes of the first block in the text and replaces `mode` and `fileName` by what
  /// its "begin" line says. Never fails on malformed text: without a "begin" line there is nothing
  /// to decode; blanks lost at line ends are added again, lines that cannot hold data are skipped,
  /// and a missing "end" does not matter. False when storage cannot be had.
  static bool decode(std::string_view in, DataBuffer& out, StringBuffer& mode,
                     StringBuffer& fileName);
};

}  // namespace zantrel

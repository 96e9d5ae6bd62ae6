#pragma once
// What XML 1.0 (fifth edition) calls well-formed: https://www.w3.org/TR/xml/

#include <string_view>

namespace zantrel {

class LogBase;

/// Whether a text in UTF-8, with or without a byte-order mark, is a well-formed document. When it
/// is not, one error with line and column says why; columns count characters.
///
/// Nothing outside the document is read: entities whose declarations may stand elsewhere are taken
/// to be fine. What the declaration says of the encoding is not compared with anything. Namespaces
/// play no part. Time and memory are linear in the text, whatever its entities would expand to, and
/// nothing recurses. Throws std::bad_alloc.
bool checkWellFormed(std::string_view utf8Document, LogBase& log);

}  // namespace zantrel

#pragma once
// Text that a component writes in a charset its caller has named.

#include <cstdint>

#include "core/charset/charset_request.h"

namespace zantrel {

class DataBuffer;
class LogBase;
class XString;

/// Where a method's charset comes from: only a property of that name can be hinted at.
enum class CharsetOrigin : std::uint8_t { Argument, CharsetProperty };

/// Appends the text in the requested charset. An unknown charset is logged by name and nothing is
/// appended; a conversion that lost something is logged with its figures, its output is there all
/// the same. Both are false. Code page 28591 is written as 1252 (deliberate: what is called Latin-1
/// commonly is the Windows page).
bool textToCharset(const XString& text, const CharsetRequest& charset, CharsetOrigin origin,
                   DataBuffer& out, LogBase& log);

}  // namespace zantrel

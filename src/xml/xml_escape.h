#pragma once
// References for characters in what is written.

#include <string_view>

namespace zantrel {

class XmlOutput;

/// Writes the content of a node, where the output has got to: "<", ">" and both quotes as
/// references, and "&" too unless a reference that must stay begins with it, which is any "&#", the
/// five of XML and the named ones of HTML's Latin-1 set. The result is the next place.
char* putEscapedContent(XmlOutput& out, char* to, std::string_view text);
/// Writes an attribute's value: the same, but of references only "&#" stays.
char* putEscapedValue(XmlOutput& out, char* to, std::string_view text);

}  // namespace zantrel

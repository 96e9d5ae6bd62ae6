#pragma once
// References for characters in what is written.

#include <string_view>

namespace zantrel {

class XmlOutput;

/// Writes content: "<", ">" and both quotes as references, and "&" too unless a reference that must
/// stay begins with it, which is any "&#", the five of XML and the named ones of HTML's Latin-1
/// set.
void putEscapedContent(XmlOutput& out, std::string_view text);
/// Writes an attribute's value: the same, but of references only "&#" stays.
void putEscapedValue(XmlOutput& out, std::string_view text);

}  // namespace zantrel

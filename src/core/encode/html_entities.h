#pragma once
// Character references of HTML and XML over UTF-8 text. All functions append to `out`, which must
// not hold the input, and return false only when storage cannot be had.

#include <string_view>

namespace zantrel {

class StringBuffer;

/// Resolves named, decimal and hexadecimal references as HTML does in text: the longest known name
/// wins, the old Latin-1 names need no ";", 128..159 mean windows-1252 characters, and numbers that
/// are no character become U+FFFD. What is no reference stays as it is.
bool htmlEntityDecode(std::string_view in, StringBuffer& out);

/// Writes every character beyond ASCII as "&#xHH;" or "&#DD;". Malformed UTF-8 becomes U+FFFD.
bool entityEncodeHex(std::string_view in, StringBuffer& out);
bool entityEncodeDec(std::string_view in, StringBuffer& out);

/// Writes & < > " ' as XML's five predefined entities.
bool xmlSpecialEncode(std::string_view in, StringBuffer& out);
/// Resolves these five; every other "&" stays.
bool xmlSpecialDecode(std::string_view in, StringBuffer& out);

}  // namespace zantrel

#pragma once
// Encoded words (RFC 2047): text in any charset as ASCII, "=?charset?Q?text?=" in quoted-printable
// or with "B" in base64.

#include <string_view>

namespace zantrel {

class LogBase;
class StringBuffer;

enum class WordCoding { Q, B };

/// Appends the UTF-8 text as words of at most 75 characters with a blank between them, each of
/// which can be read alone; nothing for an empty text. False, with nothing appended and the reason
/// logged, for an unknown charset and when the charset lacks a character of the text.
bool encodeWords(std::string_view utf8, std::string_view charset, WordCoding coding,
                 StringBuffer& out, LogBase& log);

/// Appends the text with every word in it as UTF-8. White space between two words is not part of
/// the text; all that is no word stays as it is, as do words in a charset that is not known. A
/// character may be cut in two by the end of a word, which is against the rules but not rare. False
/// only when storage cannot be had.
bool decodeWords(std::string_view text, StringBuffer& out, LogBase& log);

}  // namespace zantrel

#pragma once
// Quoted-printable (RFC 2045, section 6.7) for mail bodies. Buffer forms append. No input may lie
// inside its own output.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

/// As a maximum line length: no soft line breaks.
inline constexpr int kNoSoftBreaks = std::numeric_limits<int>::max();

/// Room that quotedPrintableEncode needs for this input; it may use all of it in passing.
std::size_t quotedPrintableMaxSize(ByteSpan in, int maxLineLength) noexcept;
/// Writes a soft break each time a line has reached `maxLineLength` characters, unless a CRLF
/// follows; a full last line gets one too. No line begins with "." or "From ", none ends with a
/// blank or tab. CRLF stays a line break; CR and LF alone are escaped.
std::size_t quotedPrintableEncode(ByteSpan in, int maxLineLength, char* out) noexcept;

/// Room that quotedPrintableDecode needs for this input; it may use all of it in passing.
std::size_t quotedPrintableDecodedMaxSize(std::string_view in) noexcept;
/// Never fails: stops at the first zero byte, drops blanks and tabs at line ends, joins lines at a
/// "=" at their end, writes other line ends as CRLF, and copies a "=" that no two digits follow.
std::size_t quotedPrintableDecode(std::string_view in, std::uint8_t* out) noexcept;

/// Append; false when storage cannot be had.
bool quotedPrintableEncode(ByteSpan in, int maxLineLength, StringBuffer& out);
bool quotedPrintableDecode(std::string_view in, DataBuffer& out);

/// The same escapes with no line break of any kind in the result (CR and LF are escaped too), for
/// one-line places such as a log entry.
bool quotedPrintableEncodeOneLine(ByteSpan in, StringBuffer& out);

}  // namespace zantrel

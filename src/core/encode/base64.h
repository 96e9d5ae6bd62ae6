#pragma once
// Base64 (RFC 4648, section 4) without and with line breaks, and a decoder that accepts anything.
// The first four pairs work on the caller's memory; the buffer forms append. No input may lie
// inside its own output.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

/// Characters that `bytes` bytes become.
std::size_t base64EncodedSize(std::size_t bytes) noexcept;
/// Writes the base64 form, "=" padding included; returns the characters written.
std::size_t base64Encode(ByteSpan in, char* out) noexcept;

/// The same with a CRLF each time a line has reached `maxLineLength` characters, after a full last
/// line too. Lines consist of whole groups of four, so a length that is no multiple of four is
/// rounded up, and so are lengths below four.
std::size_t base64LinesSize(std::size_t bytes, int maxLineLength) noexcept;
std::size_t base64EncodeLines(ByteSpan in, int maxLineLength, char* out) noexcept;

/// Room that decoding `characters` characters may need.
std::size_t base64DecodedMaxSize(std::size_t characters) noexcept;
/// Never fails: stops at "=" or a zero byte, skips what lies outside "+".."z" (line breaks and
/// blanks among it), counts "-" as 62, "_" as 63 and other strays inside that range as 0. An
/// incomplete last group yields the whole bytes that it holds. Returns the bytes written.
std::size_t base64Decode(std::string_view in, std::uint8_t* out) noexcept;

/// Append; false when storage cannot be had.
bool base64Encode(ByteSpan in, StringBuffer& out);
bool base64EncodeLines(ByteSpan in, int maxLineLength, StringBuffer& out);
bool base64Decode(std::string_view in, DataBuffer& out);

}  // namespace zantrel

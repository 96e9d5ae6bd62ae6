#pragma once
// Base32 (RFC 4648, section 6): "A".."Z", "2".."7", "=" padding to groups of eight. Buffer forms
// append. No input may lie inside its own output.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

std::size_t base32EncodedSize(std::size_t bytes) noexcept;
std::size_t base32Encode(ByteSpan in, char* out) noexcept;

/// Room that decoding `characters` characters may need.
std::size_t base32DecodedMaxSize(std::size_t characters) noexcept;
/// Never fails: stops at "=" or a zero byte, takes letters of either case, skips everything else,
/// and drops the bits behind the last whole byte.
std::size_t base32Decode(std::string_view in, std::uint8_t* out) noexcept;

/// Append; false when storage cannot be had.
bool base32Encode(ByteSpan in, StringBuffer& out);
bool base32Decode(std::string_view in, DataBuffer& out);

}  // namespace zantrel

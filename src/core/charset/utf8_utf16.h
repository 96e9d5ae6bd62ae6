#pragma once
// Validating conversion between UTF-8 and UTF-16, the two forms that all text passes through.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/bytes.h"
#include "core/charset/codec.h"

namespace zantrel {

/// UTF-8 (Unicode 15, section 3.9, table 3-7) to UTF-16 in the machine's byte order. Stops at the
/// first ill-formed sequence; `badLength` is then the length of its maximal subpart (1 to 3 bytes),
/// so that one U+FFFD a stop is what the Unicode standard recommends. Never writes half a pair.
CodecResult utf8ToUtf16(ByteSpan in, bool last, std::span<char16_t> out) noexcept;

/// UTF-16 to UTF-8. A surrogate without its partner is Invalid with `badLength` 1.
CodecResult utf16ToUtf8(std::span<const char16_t> in, bool last,
                        std::span<std::uint8_t> out) noexcept;

/// How many bytes of UTF-8 stand before the first ill-formed sequence: all of them if there is
/// none.
std::size_t validUtf8Size(ByteSpan text) noexcept;
inline bool isValidUtf8(ByteSpan text) noexcept {
  return validUtf8Size(text) == text.size();
}

/// Copies 16-bit units with their bytes swapped. The spans may be the same memory, and of any
/// alignment; a byte without partner at the end is left out. Returns the bytes written.
std::size_t swapUnits(ByteSpan in, std::uint8_t* out) noexcept;

namespace utf_portable {
CodecResult utf8ToUtf16(ByteSpan in, bool last, std::span<char16_t> out) noexcept;
CodecResult utf16ToUtf8(std::span<const char16_t> in, bool last,
                        std::span<std::uint8_t> out) noexcept;
}  // namespace utf_portable

}  // namespace zantrel

#pragma once
// What every encoder needs to know about UTF-16 code units.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/charset/codec.h"

namespace zantrel {

inline bool isHighSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xD800;
}
inline bool isLowSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xDC00;
}

/// Code point of a surrogate pair.
inline char32_t joinSurrogates(char16_t high, char16_t low) noexcept {
  return 0x10000 + ((static_cast<char32_t>(high) & 0x3FF) << 10) + (low & 0x3FFu);
}

/// Writes a code point above U+FFFF as its two units.
inline void splitSurrogates(char32_t point, char16_t* out) noexcept {
  out[0] = static_cast<char16_t>(0xD7C0 + (point >> 10));
  out[1] = static_cast<char16_t>(0xDC00 + (point & 0x3FF));
}

/// Fills in why an encoder stopped at rest[0], a unit that its page lacks: a lone surrogate is
/// Invalid, a whole character Unmappable, half a pair at the end of a piece Truncated.
inline void stopAtUnit(std::span<const char16_t> rest, bool last, CodecResult& result) noexcept {
  result.badLength = 1;
  if (isLowSurrogate(rest[0])) {
    result.stop = CodecStop::Invalid;
  } else if (!isHighSurrogate(rest[0])) {
    result.stop = CodecStop::Unmappable;
  } else if (rest.size() == 1) {
    result.stop = last ? CodecStop::Invalid : CodecStop::Truncated;
  } else if (isLowSurrogate(rest[1])) {
    result.stop = CodecStop::Unmappable;
    result.badLength = 2;
  } else {
    result.stop = CodecStop::Invalid;
  }
}

}  // namespace zantrel

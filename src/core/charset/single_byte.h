#pragma once
// Code pages of one byte a character: a row of 256 code points a page, and the two codecs that
// serve them all. The way back is derived from the row when an encoder is made (some hundred
// nanoseconds), so that a page costs 512 bytes of read-only data and nothing at run time until it
// is used.

#include <cstdint>

#include "core/charset/codec.h"

namespace zantrel {

/// In every table of the charsets: no character. U+FFFF is none, so the mark cannot collide.
inline constexpr char16_t kUndefined = 0xFFFF;

struct SingleByteTable {
  /// The character of each byte. Of two bytes with one character the lower is written.
  char16_t toUnicode[256];
};

DecoderPtr makeSingleByteDecoder(const SingleByteTable& table);
EncoderPtr makeSingleByteEncoder(const SingleByteTable& table);

}  // namespace zantrel

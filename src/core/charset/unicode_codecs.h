#pragma once
// Decoders and encoders of the Unicode encoding forms: UTF-8, UTF-16 and UTF-32 in both byte
// orders. None of them looks for a byte-order mark; that is the conversion's first step.

#include "core/charset/codec.h"

namespace zantrel {

DecoderPtr makeUtf8Decoder();
EncoderPtr makeUtf8Encoder();
DecoderPtr makeUtf16LeDecoder();
EncoderPtr makeUtf16LeEncoder();
DecoderPtr makeUtf16BeDecoder();
EncoderPtr makeUtf16BeEncoder();
DecoderPtr makeUtf32LeDecoder();
EncoderPtr makeUtf32LeEncoder();
DecoderPtr makeUtf32BeDecoder();
EncoderPtr makeUtf32BeEncoder();

}  // namespace zantrel

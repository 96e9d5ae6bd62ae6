#pragma once
// The mixed EBCDIC pages of East Asia: a single-byte and a double-byte set between SO and SI.

#include "core/charset/codec.h"

namespace zantrel {

DecoderPtr makeEbcdicDecoder50930();
EncoderPtr makeEbcdicEncoder50930();
DecoderPtr makeEbcdicDecoder50931();
EncoderPtr makeEbcdicEncoder50931();
DecoderPtr makeEbcdicDecoder50933();
EncoderPtr makeEbcdicEncoder50933();
DecoderPtr makeEbcdicDecoder50935();
EncoderPtr makeEbcdicEncoder50935();
DecoderPtr makeEbcdicDecoder50937();
EncoderPtr makeEbcdicEncoder50937();
DecoderPtr makeEbcdicDecoder50939();
EncoderPtr makeEbcdicEncoder50939();

}  // namespace zantrel

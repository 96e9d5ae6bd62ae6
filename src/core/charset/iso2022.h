#pragma once
// The seven-bit encodings of East Asia: ISO-2022-JP in its three numbers, ISO-2022-KR, ISO-2022-CN
// and HZ.

#include "core/charset/codec.h"

namespace zantrel {

DecoderPtr makeIso2022JpDecoder();
EncoderPtr makeIso2022JpEncoder50220();
EncoderPtr makeIso2022JpEncoder50221();
EncoderPtr makeIso2022JpEncoder50222();

DecoderPtr makeIso2022KrDecoder();
EncoderPtr makeIso2022KrEncoder();
DecoderPtr makeIso2022CnDecoder();
EncoderPtr makeIso2022CnEncoder();
DecoderPtr makeHzDecoder();
EncoderPtr makeHzEncoder();

}  // namespace zantrel

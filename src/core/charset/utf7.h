#pragma once
// UTF-7 (RFC 2152), code page 65000.

#include "core/charset/codec.h"

namespace zantrel {

DecoderPtr makeUtf7Decoder();
EncoderPtr makeUtf7Encoder();

}  // namespace zantrel

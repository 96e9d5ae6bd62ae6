#pragma once

#include "core/charset/codec.h"

namespace zantrel {

/// GB 18030 whole: one-, two- and four-byte codes (code page 54936).
DecoderPtr makeGb18030Decoder();
EncoderPtr makeGb18030Encoder();

}  // namespace zantrel

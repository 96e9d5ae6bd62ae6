#pragma once

#include "core/charset/codec.h"

namespace zantrel {

/// EUC-JP (code page 51932): JIS X 0208, half-width kana and, as three bytes, JIS X 0212.
DecoderPtr makeEucJpDecoder();
EncoderPtr makeEucJpEncoder();

}  // namespace zantrel

#pragma once

#include "core/charset/codec.h"

namespace zantrel {

/// EUC-TW (code page 51950): CNS 11643, plane 1 as two bytes, the planes 1..7 and 15 as four.
DecoderPtr makeEucTwDecoder();
EncoderPtr makeEucTwEncoder();

}  // namespace zantrel

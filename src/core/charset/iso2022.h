#pragma once
// The seven-bit encodings of East Asia: ISO-2022-JP in its three numbers, ISO-2022-KR, ISO-2022-CN
// and HZ.

#include <cstdint>

#include "core/charset/codec.h"

namespace zantrel {

/// What becomes of codes of 932 that stand for the same character.
enum class Duplicates : std::uint8_t {
  Merged,  ///< each is read as that character, which is written as one of them
  Apart,   ///< they keep apart, between codecs of this kind only (distinct_932.h)
};

/// How half-width kana are written.
enum class KanaForm : std::uint8_t { FullWidth, Escape, Shift };

DecoderPtr makeIso2022JpDecoder(Duplicates duplicates);
EncoderPtr makeIso2022JpEncoder(KanaForm form, Duplicates duplicates);

DecoderPtr makeIso2022KrDecoder();
EncoderPtr makeIso2022KrEncoder();
DecoderPtr makeIso2022CnDecoder();
EncoderPtr makeIso2022CnEncoder();
DecoderPtr makeHzDecoder();
EncoderPtr makeHzEncoder();

}  // namespace zantrel

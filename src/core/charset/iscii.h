#pragma once
// The Indian Script Code for Information Interchange, code pages 57002 to 57011.

#include "core/charset/codec.h"

namespace zantrel {

DecoderPtr makeIsciiDecoder57002();  // Devanagari
EncoderPtr makeIsciiEncoder57002();
DecoderPtr makeIsciiDecoder57003();  // Bengali
EncoderPtr makeIsciiEncoder57003();
DecoderPtr makeIsciiDecoder57004();  // Tamil
EncoderPtr makeIsciiEncoder57004();
DecoderPtr makeIsciiDecoder57005();  // Telugu
EncoderPtr makeIsciiEncoder57005();
DecoderPtr makeIsciiDecoder57006();  // Assamese
EncoderPtr makeIsciiEncoder57006();
DecoderPtr makeIsciiDecoder57007();  // Oriya
EncoderPtr makeIsciiEncoder57007();
DecoderPtr makeIsciiDecoder57008();  // Kannada
EncoderPtr makeIsciiEncoder57008();
DecoderPtr makeIsciiDecoder57009();  // Malayalam
EncoderPtr makeIsciiEncoder57009();
DecoderPtr makeIsciiDecoder57010();  // Gujarati
EncoderPtr makeIsciiEncoder57010();
DecoderPtr makeIsciiDecoder57011();  // Punjabi
EncoderPtr makeIsciiEncoder57011();

}  // namespace zantrel

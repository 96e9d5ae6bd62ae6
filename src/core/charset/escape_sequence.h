#pragma once
// Recognising escape sequences in ISO-2022 text.

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

template <class Meaning>
struct EscapeSequence {
  std::string_view bytes;  ///< without the ESC in front
  Meaning meaning;
};

/// The sequence behind the ESC at in[0], or null; `partial` says that more input could make one.
template <class Meaning>
const EscapeSequence<Meaning>* findEscape(std::span<const EscapeSequence<Meaning>> known,
                                          ByteSpan in, bool& partial) noexcept {
  partial = false;
  const std::string_view text = asText(in.subspan(1));
  for (const EscapeSequence<Meaning>& sequence : known) {
    const std::size_t most = std::min(text.size(), sequence.bytes.size());
    std::size_t same = 0;
    while (same < most && text[same] == sequence.bytes[same]) ++same;
    if (same == sequence.bytes.size()) return &sequence;
    partial = partial || same == text.size();
  }
  return nullptr;
}

}  // namespace zantrel

#pragma once
// The contract between the conversion engine and the code pages. A page's decoder turns its bytes
// into UTF-16 code units, its encoder does the reverse; the engine joins any decoder to any encoder
// through a block of UTF-16 that stays in the first-level cache. Codecs work in blocks of any size,
// keep what state they need between calls, report trouble instead of deciding about it, and never
// look outside the given spans.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/bytes.h"

namespace zantrel {

enum class CodecStop : std::uint8_t {
  InputEnd,    ///< all of the input was used
  OutputFull,  ///< the next item does not fit; call again with more room
  Truncated,   ///< `last` was false and the input ends inside an item, which stays unconsumed: the
               ///< caller feeds it again together with what follows. With `last` it is Invalid
  Invalid,     ///< at `consumed` stand `badLength` bytes or units that mean nothing
  Unmappable,  ///< encoder: at `consumed` stand `badLength` units of a character the page lacks
};

struct CodecResult {
  std::size_t consumed = 0;  ///< input used, up to the trouble
  std::size_t produced = 0;  ///< output written
  CodecStop stop = CodecStop::InputEnd;
  std::uint8_t badLength = 0;  ///< input to step over after Invalid or Unmappable, at least 1
};

class Decoder {
 public:
  virtual ~Decoder() = default;
  /// `last` says that no input follows. Writes whole characters only: never half a surrogate pair.
  virtual CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) = 0;
  /// Back to the state at the start of a text.
  virtual void reset() {}
  /// A copy in the same state; null from a decoder that keeps none between calls.
  virtual std::unique_ptr<Decoder> clone() const { return nullptr; }
};

class Encoder {
 public:
  virtual ~Encoder() = default;
  virtual CodecResult encode(std::span<const char16_t> in, bool last,
                             std::span<std::uint8_t> out) = 0;
  /// Writes what ends a text (the way back to the initial shift state). At most 16 bytes.
  virtual std::size_t finish(std::span<std::uint8_t> out) {
    (void)out;
    return 0;
  }
  virtual void reset() {}
};

using DecoderPtr = std::unique_ptr<Decoder>;
using EncoderPtr = std::unique_ptr<Encoder>;

}  // namespace zantrel

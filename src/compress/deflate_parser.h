#pragma once
// Turning bytes into literals and matches. Each parser keeps an index of the window of its own.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/deflate_block.h"

namespace zantrel::zee {

/// A part of the window. Offsets count from its first byte; `position` is where that byte stands in
/// the stream, modulo 2^32. As many bytes as a distance may be can be read before it, and
/// kReadAhead behind the end, but they are no data.
struct WindowView {
  const std::uint8_t* bytes;
  std::uint32_t position;
  std::size_t end;
};

class Parser {
 public:
  /// Bytes that may be looked at behind a place, and by which a call may overrun its `stop`: a
  /// chain of matches put off, each longer than the one before, and the last of them.
  static constexpr std::size_t kOverrun = 2 * kMaxMatch + 2;
  static constexpr std::size_t kReadAhead = 16;
  /// Most bytes of one call.
  static constexpr std::size_t kPiece = 4096;
  /// Most sequences that one call adds.
  static constexpr std::size_t kMaxSequences = (kPiece + kOverrun) / kMinMatch + 1;

  virtual ~Parser() = default;

  /// Starts a stream. `size` bounds its length if that is known to be short.
  virtual void start(std::size_t size) noexcept = 0;

  /// Adds what stands from `next` to `stop` or a little behind it and answers where it ended.
  /// Unless the data end, `stop` is at least kOverrun before the end.
  virtual std::size_t parse(const WindowView& window, std::size_t next, std::size_t stop,
                            Block& block, Frequencies& counts) = 0;
};

/// For a level from 1 to 9; null when memory is lacking.
std::unique_ptr<Parser> makeParser(int level);

}  // namespace zantrel::zee

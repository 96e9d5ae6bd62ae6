#pragma once
// The first stage of bzip2: four equal bytes in a row are followed by the count of further ones.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/bytes.h"

namespace zantrel {

/// Shortens runs on the way into a block.
class Bzip2RunEncoder {
 public:
  Bzip2RunEncoder();
  void clear() noexcept { size_ = runLength_ = 0; }

  /// Takes input off the front until it is used up or the block is full.
  void add(ByteSpan& in) noexcept;
  bool isFull() const noexcept;
  /// Ends the run under way: the block is complete.
  void finish() noexcept;
  bool empty() const noexcept { return size_ == 0; }
  ByteSpan block() const noexcept { return {bytes_.get(), size_}; }

 private:
  void append(ByteSpan bytes) noexcept;
  void addToRun(ByteSpan& in) noexcept;
  void addLiterals(ByteSpan& in) noexcept;

  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_ = 0;
  std::size_t runLength_ = 0;  // equal bytes at the end of the input so far
  std::uint8_t runByte_ = 0;
};

/// Restores the runs of a block that somebody else owns, in pieces.
class Bzip2RunDecoder {
 public:
  void begin(ByteSpan block) noexcept;
  /// Fills `out` as far as the block goes; the count of bytes written.
  std::size_t decode(std::uint8_t* out, std::size_t room) noexcept;
  bool atEnd() const noexcept { return at_ == block_.size() && repeats_ == 0; }
  /// At the end: the count of a run was due there.
  bool endsInRun() const noexcept { return runFollows_; }

 private:
  ByteSpan block_;
  std::size_t at_ = 0;
  std::size_t literalEnd_ = 0;  // what lies in front of it is copied
  bool runFollows_ = false;     // a count stands there
  std::size_t repeats_ = 0;
};

}  // namespace zantrel

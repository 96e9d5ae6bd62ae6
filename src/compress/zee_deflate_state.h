#pragma once
// The compressor's state: the window, the index of what was seen, and output not yet taken.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "compress/deflate_block.h"
#include "compress/deflate_block_writer.h"
#include "compress/deflate_noise.h"
#include "compress/deflate_parser.h"
#include "core/bytes.h"

namespace zantrel {

/// Compresses to one raw deflate stream (RFC 1951). Whoever owns it fills the window, lets it run,
/// and takes the output, in turns. The result depends on the bytes and the level only, not on how
/// they came: the window is worked on when it is full and at the end.
class ZeeDeflateState final {
 public:
  ZeeDeflateState() noexcept;

  /// Starts afresh, whatever came before. A level from 0 (stored only) to 9; others count as the
  /// nearest of these.
  void start(int level) noexcept;

  /// Takes as much input as there is room for and answers how many bytes that was.
  std::size_t fill(ByteSpan input) noexcept;
  /// Moves output out, and answers how many bytes that was.
  std::size_t drain(std::span<std::uint8_t> output) noexcept;
  bool hasOutput() const noexcept { return taken_ < written_; }

  /// Works on the window, if it is full or `finish` is set, until a block has been written or more
  /// input is needed; not to be called while there is output. False when memory is lacking.
  bool run(bool finish) noexcept;
  /// The final block was written.
  bool finished() const noexcept { return finished_; }

 private:
  static constexpr std::size_t kHistory = zee::kMaxDistance;
  static constexpr std::size_t kMaxBlock = 163840;
  static constexpr std::size_t kCapacity = 262144;
  static constexpr std::size_t kPiece = zee::Parser::kPiece;
  static_assert(kPiece == zee::NoiseDetector::kPiece);
  // Whatever has to stay, a quarter of the window is free for input.
  static_assert(kHistory + kMaxBlock + 65536 <= kCapacity);

  bool startParser(bool finish) noexcept;
  void addPiece() noexcept;
  void addNoise(std::size_t size) noexcept;
  void addTokens(std::size_t size) noexcept;
  void settle() noexcept;
  void writeSettled() noexcept;
  void writeAll(bool last) noexcept;
  void clearBlock() noexcept;
  std::uint8_t* window() noexcept { return window_.data() + kHistory; }
  void slide() noexcept;

  int level_ = 0;
  bool started_ = false;  // the parser knows that a stream began
  bool finished_ = false;
  std::unique_ptr<zee::Parser> parser_;  // of `parserLevel_`, kept for the next stream
  int parserLevel_ = 0;
  zee::NoiseDetector noise_;
  zee::BitWriter out_;

  // Offsets in the window. What is before the block is history.
  std::size_t blockStart_ = 0;
  std::size_t recentStart_ = 0;  // the part of the block that may yet become one of its own
  std::size_t next_ = 0;         // first byte that is in no block yet
  std::size_t end_ = 0;
  std::uint32_t position_ = 0;  // of the window's first byte in the stream, modulo 2^32

  bool stored_ = false;      // the block is noise
  bool expectNoise_ = true;  // in the last piece
  std::size_t settledSequences_ = 0;
  zee::Frequencies settled_, recent_;
  zee::Block block_;

  std::size_t taken_ = 0, written_ = 0;
  // The first bytes stay zero: a parser may look at what would be before the stream.
  std::array<std::uint8_t, kHistory + kCapacity + zee::Parser::kReadAhead> window_;
  std::array<std::uint8_t, zee::maxBlockOutput(kMaxBlock)> pending_;
};

}  // namespace zantrel

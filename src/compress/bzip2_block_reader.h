#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/bzip2_bit_input.h"
#include "compress/bzip2_format.h"
#include "compress/bzip2_huffman.h"
#include "compress/bzip2_inverse.h"
#include "compress/bzip2_move_to_front.h"
#include "core/bytes.h"

namespace zantrel {

/// Reads what stands between the checksum of a block and the next mark: the block before its runs
/// are restored. Stops wherever the input ends and goes on from there.
class Bzip2BlockReader {
 public:
  enum class Status { done, needsInput, failed };

  Bzip2BlockReader();

  /// A block of at most `capacity` bytes comes next.
  void begin(std::size_t capacity) noexcept;
  Status read(Bzip2BitInput& in);
  /// The whole block, once reading is done; it stays until the next begin().
  ByteSpan block() const noexcept { return {block_.get(), size_}; }
  /// What is wrong with the block, after a failure.
  const char* fault() const noexcept { return fault_; }

 private:
  enum class Step { header, byteRanges, bytes, counts, selectors, codeLengths, symbols, complete };

  Status fail(const char* fault) noexcept;
  Status next(Step step) noexcept;
  Status advance(Bzip2BitInput& in);
  Status readHeader(Bzip2BitInput& in) noexcept;
  Status readByteRanges(Bzip2BitInput& in) noexcept;
  Status readBytes(Bzip2BitInput& in) noexcept;
  Status readCounts(Bzip2BitInput& in) noexcept;
  Status readSelectors(Bzip2BitInput& in) noexcept;
  Status readCodeLengths(Bzip2BitInput& in) noexcept;
  Status readSymbols(Bzip2BitInput& in) noexcept;
  bool addRun() noexcept;
  Status complete();

  Step step_ = Step::complete;
  const char* fault_ = "";
  std::unique_ptr<std::uint8_t[]> block_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
  bool randomised_ = false;
  std::size_t origin_ = 0;

  unsigned ranges_ = 0;  // sixteens of byte values with one that occurs, first the highest bit
  unsigned index_ = 0;   // of the range, selector or symbol that is read next
  unsigned alphabetSize_ = 0;
  Bzip2MoveToFront list_;

  unsigned tableCount_ = 0;
  unsigned selectorCount_ = 0;
  std::array<std::uint8_t, bzip2::kMaxSelectors> selectors_;
  Bzip2MoveToFront tableOrder_;
  unsigned table_ = 0;       // whose code lengths are read
  unsigned codeLength_ = 0;  // of the symbol before; 0: the first is due
  std::array<std::uint8_t, bzip2::kMaxAlphabet> codeLengths_;
  std::array<Bzip2DecodeTable, bzip2::kMaxTables> tables_;

  unsigned groupLeft_ = 0;  // symbols before the next selector
  std::size_t run_ = 0;     // of the front byte, not yet written
  std::size_t runDigit_ = 1;
  Bzip2Inverse inverse_;
};

}  // namespace zantrel

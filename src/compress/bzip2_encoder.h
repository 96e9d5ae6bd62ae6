#pragma once

#include <cstdint>

#include "compress/bzip2_bit_output.h"
#include "compress/bzip2_block_writer.h"
#include "compress/bzip2_crc.h"
#include "compress/bzip2_run_length.h"
#include "core/bytes.h"

namespace zantrel {

/// Makes one bzip2 stream with the largest blocks.
class Bzip2Encoder {
 public:
  Bzip2Encoder();

  /// Takes input off the front until it is used up or a block is full and written.
  void add(ByteSpan& in);
  /// Writes the last block and the end of the stream.
  void finish();
  /// What is written, until it is dropped.
  ByteSpan output() const noexcept { return out_.bytes(); }
  void dropOutput() noexcept { out_.dropBytes(); }

 private:
  void writeBlock();

  Bzip2RunEncoder runs_;
  Bzip2Crc blockCrc_;
  std::uint32_t streamCrc_ = 0;
  Bzip2BlockWriter writer_;
  Bzip2BitOutput out_;
};

}  // namespace zantrel

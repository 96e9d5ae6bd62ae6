#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/bzip2_bit_input.h"
#include "compress/bzip2_block_reader.h"
#include "compress/bzip2_crc.h"
#include "compress/bzip2_run_length.h"
#include "core/bytes.h"

namespace zantrel {

class LogBase;

/// Expands bzip2 data: one stream, or several one after the other. What follows the last and is no
/// stream is ignored.
class Bzip2Decoder {
 public:
  enum class Status { hasOutput, needsInput, failed };

  Bzip2Decoder();

  /// The next piece of input, which must stay where it is until advance() needs more.
  void feed(ByteSpan in) noexcept { in_.feed(in); }
  /// Goes on until output() holds a piece, which is to be taken before the next call, the input is
  /// used up, or the data turn out to be wrong, which is logged.
  Status advance(LogBase& log);
  ByteSpan output() const noexcept { return {output_.get(), outputSize_}; }
  /// There is no more input: true if it ended behind a stream, else the reason is logged.
  bool finish(LogBase& log);

 private:
  enum class Step { streamHeader, mark, blockCrc, block, output, streamCrc, trailer };
  using Result = Bzip2BlockReader::Status;

  Result step(LogBase& log);
  Result readStreamHeader(LogBase& log);
  Result readMark(LogBase& log);
  Result readBlockCrc();
  Result readBlock(LogBase& log);
  Result writeOutput(LogBase& log);
  Result readStreamCrc(LogBase& log);
  Result ignoreTrailer(LogBase& log);

  Step step_ = Step::streamHeader;
  bool anyStream_ = false;  // one has ended
  Bzip2BitInput in_;
  std::size_t blockCapacity_ = 0;
  std::uint32_t storedCrc_ = 0;
  std::uint32_t streamCrc_ = 0;
  Bzip2Crc blockCrc_;
  Bzip2BlockReader reader_;
  Bzip2RunDecoder runs_;
  std::unique_ptr<std::uint8_t[]> output_;
  std::size_t outputSize_ = 0;
};

}  // namespace zantrel

#pragma once

#include <memory>

#include "compress/bzip2_decoder.h"
#include "compress/bzip2_encoder.h"
#include "compress/compression_engine.h"

namespace zantrel {

/// bzip2, in the format that bzip2 1.0 reads and writes. Compression makes one stream with blocks
/// of 900,000 bytes, output appearing block by block. Decompression takes streams one after the
/// other, checks every checksum and ignores what follows and is no stream. Both take constant
/// memory, some 15 MB, and time linear in input and output.
class Bzip2Engine final : public CompressionEngine {
 public:
  bool compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress) override;
  bool decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                        ProgressMonitor* progress) override;
  bool beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                     ProgressMonitor* progress) override;
  bool moreCompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                       ProgressMonitor* progress) override;
  bool moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress) override;
  bool endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  /// A piece of input may stand for a million times as much: output goes straight to the sink.
  bool decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                        ProgressMonitor* progress) override;

 private:
  template <class Take>
  bool decode(ByteSpan in, Take take, LogBase& log, ProgressMonitor* progress);

  std::unique_ptr<Bzip2Encoder> encoder_;  // null but from Begin to End
  std::unique_ptr<Bzip2Decoder> decoder_;  // the same
  std::uint64_t decodedSize_ = 0;
};

}  // namespace zantrel

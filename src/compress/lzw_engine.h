#pragma once

#include "compress/compression_engine.h"

namespace zantrel {

/// LZW as compress and `gzip -d` know it from files named .Z: codes of 9 to 16 bits. Buffers and
/// whole sources only, in constant memory; there is no checksum, so damage is noticed only where it
/// makes a code that cannot be.
class LzwEngine final : public CompressionEngine {
 public:
  bool compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress) override;
  bool decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                        ProgressMonitor* progress) override;
  bool compressSource(DataSource& source, DataSink& sink, LogBase& log,
                      ProgressMonitor* progress) override;
  bool decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                        ProgressMonitor* progress) override;

  // Streams in pieces are not offered: these fail.
  bool beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                     ProgressMonitor* progress) override;
  bool moreCompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                       ProgressMonitor* progress) override;
  bool moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress) override;
  bool endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
};

}  // namespace zantrel

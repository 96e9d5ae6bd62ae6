#pragma once

#include "compress/compression_engine.h"

namespace zantrel {

/// The format "none": output is input.
class CopyEngine final : public CompressionEngine {
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

 private:
  std::uint64_t produced_ = 0;
};

}  // namespace zantrel

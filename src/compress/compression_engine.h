#pragma once
// What every compression format offers, so that a front can choose one at run time.

#include <cstdint>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/zantrel_object.h"

namespace zantrel {

class DataSink;
class DataSource;
class LogBase;
class ProgressMonitor;

/// All functions append to `out` and answer false, the reason being logged, when they fail; what
/// was produced before a failure stays in `out`. An engine may be used again after a failure: every
/// Begin starts afresh. `progress` may be null; input bytes are reported to it, and an abort ends
/// the call. One engine serves one stream at a time.
class CompressionEngine : public ZantrelObject {
 public:
  virtual bool compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                              ProgressMonitor* progress) = 0;
  /// Fails unless the data are complete.
  virtual bool decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) = 0;

  /// Starts a stream with its first input, which may be empty; output appears as soon as it is
  /// certain. More without a Begin fails, as End does.
  virtual bool beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                             ProgressMonitor* progress) = 0;
  virtual bool moreCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                            ProgressMonitor* progress) = 0;
  virtual bool endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) = 0;

  virtual bool beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                               ProgressMonitor* progress) = 0;
  virtual bool moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                              ProgressMonitor* progress) = 0;
  /// Fails when the stream has not reached its end.
  virtual bool endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) = 0;

  /// Whole sources, in constant memory. The sink is not committed.
  virtual bool compressSource(DataSource& source, DataSink& sink, LogBase& log,
                              ProgressMonitor* progress);
  virtual bool decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                                ProgressMonitor* progress);

  /// Decompression fails as soon as one stream would produce more bytes than this: a guard against
  /// small inputs made to fill memory or disk. 0, the default, means no limit.
  void setMaxDecompressedSize(std::uint64_t bytes) noexcept { maxDecompressedSize_ = bytes; }

 protected:
  /// False, and logged, when `total` bytes of output are more than allowed.
  bool withinLimit(std::uint64_t total, LogBase& log) const;
  std::uint64_t maxDecompressedSize() const noexcept { return maxDecompressedSize_; }

 private:
  std::uint64_t maxDecompressedSize_ = 0;
};

}  // namespace zantrel

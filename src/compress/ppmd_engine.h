#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "compress/compression_engine.h"
#include "compress/ppmd_coder.h"

namespace zantrel {

/// PPMd variant I as zip archives carry it under method 98 (APPNOTE 5.10): two bytes that tell the
/// order, the model's memory and what it does when that is full, then the range-coded symbols,
/// which end with an escape from the shortest context. The best choice for text; both directions
/// take the same time and the model's memory, and nothing but the end of the stream is checked.
class PpmdEngine final : public CompressionEngine {
 public:
  static constexpr unsigned kMinOrder = 2;
  static constexpr unsigned kMaxOrder = PpmdModel::kMaxOrder;
  static constexpr unsigned kDefaultOrder = 8;
  static constexpr unsigned kMaxMemoryMb = 256;
  static constexpr unsigned kDefaultMemoryMb = 16;

  PpmdEngine();
  ~PpmdEngine() override;

  /// For streams compressed from now on: symbols of context, 2 to 16, and megabytes of memory, 1 to
  /// 256; nearest values are taken.
  void setModel(unsigned order, unsigned memoryMb, PpmdRestore restore = PpmdRestore::Restart);

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
  struct Compression;
  struct Decompression;

  bool readHeader(LogBase& log);
  bool decodeHeld(ByteSpan& held, DataBuffer& out, LogBase& log);
  bool decodeRest(DataBuffer& out, LogBase& log);
  bool release(ByteSpan bytes, DataBuffer& out, LogBase& log);

  unsigned order_ = kDefaultOrder;
  unsigned memoryMb_ = kDefaultMemoryMb;
  PpmdRestore restore_ = PpmdRestore::Restart;
  std::unique_ptr<Compression> compression_;      // null but from Begin to End
  std::unique_ptr<Decompression> decompression_;  // the same
};

}  // namespace zantrel

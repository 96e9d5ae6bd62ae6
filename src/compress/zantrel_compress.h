#pragma once
// The front of all compression formats, one of which a number chooses.

#include <cstdint>
#include <memory>
#include <string_view>

#include "compress/compression_engine.h"
#include "core/zantrel_object.h"

namespace zantrel {

enum class CompressionAlgorithm : std::int32_t {
  None = 0,  ///< bytes are copied
  Deflate = 1,
  Bzip2 = 2,
  Lzw = 3,
  Ppmd = 4,
};

/// The format of a name: "deflate" alone, any name that contains "bz", "none" or "lz", in this
/// order; every other one is PPMd, "zlib" among them, deliberately. Case and blanks around do not
/// matter.
CompressionAlgorithm compressionAlgorithmOf(std::string_view name);
/// "none", "deflate", "bz2", "lzw" or "ppmd".
const char* compressionAlgorithmName(CompressionAlgorithm algorithm) noexcept;

/// Holds one engine of each kind, made when it is first needed. Every operation is the engine's;
/// see CompressionEngine.
class ZantrelCompress final : public ZantrelObject {
 public:
  static constexpr int kDefaultDeflateLevel = 6;

  ZantrelCompress();
  ~ZantrelCompress() override;

  /// Chooses the format by its number; false, with nothing changed, for an unknown one.
  bool setAlgorithm(std::int32_t id) noexcept;
  void setAlgorithm(CompressionAlgorithm algorithm) noexcept { algorithm_ = algorithm; }
  CompressionAlgorithm algorithm() const noexcept { return algorithm_; }

  /// 0 to 9; holds for the streams begun afterwards.
  void setDeflateLevel(int level) noexcept { deflateLevel_ = level; }
  /// Whether the inflater logs its states.
  void setTrace(bool trace) noexcept { trace_ = trace; }
  /// See CompressionEngine::setMaxDecompressedSize().
  void setMaxDecompressedSize(std::uint64_t bytes) noexcept { maxDecompressedSize_ = bytes; }

  bool compress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().compressBuffer(in, out, log, progress);
  }
  bool decompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().decompressBuffer(in, out, log, progress);
  }
  bool compress(DataSource& in, DataSink& out, LogBase& log, ProgressMonitor* progress) {
    return engine().compressSource(in, out, log, progress);
  }
  bool decompress(DataSource& in, DataSink& out, LogBase& log, ProgressMonitor* progress) {
    return engine().decompressSource(in, out, log, progress);
  }

  bool beginCompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().beginCompress(in, out, log, progress);
  }
  bool moreCompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().moreCompress(in, out, log, progress);
  }
  bool endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().endCompress(out, log, progress);
  }
  bool beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().beginDecompress(in, out, log, progress);
  }
  bool moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().moreDecompress(in, out, log, progress);
  }
  bool endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
    return engine().endDecompress(out, log, progress);
  }

  /// The engine of the chosen format, set up.
  CompressionEngine& engine();

 private:
  struct Engines;

  CompressionEngine& chosen();

  CompressionAlgorithm algorithm_ = CompressionAlgorithm::Ppmd;
  int deflateLevel_ = kDefaultDeflateLevel;
  bool trace_ = false;
  std::uint64_t maxDecompressedSize_ = 0;
  std::unique_ptr<Engines> engines_;
};

}  // namespace zantrel

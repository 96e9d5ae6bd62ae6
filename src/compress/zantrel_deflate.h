#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/compression_engine.h"
#include "compress/inflate_state2.h"
#include "compress/zee_stream.h"

namespace zantrel {

/// Deflate (RFC 1951) with and without the zlib framing (RFC 1950), in both directions. A stream of
/// Begin, More... and End is one deflate stream, the same however the input was cut.
///
/// Of the zlib framing the header alone matters when reading: its first byte and its check bits are
/// not looked at, a preset dictionary is not used, and the Adler-32 is not checked (deliberate).
class ZantrelDeflate final : public CompressionEngine {
 public:
  static constexpr int kDefaultLevel = 6;
  /// Output appears in pieces of at most so many bytes.
  static constexpr std::size_t kStagingSize = 60000;

  ZantrelDeflate();
  ~ZantrelDeflate() override;

  /// From 0 (stored) over 1 (fastest) to 9 (smallest), for streams begun from now on.
  void setLevel(int level) noexcept { level_ = level; }
  int level() const noexcept { return level_; }
  /// Whether the inflater logs its states.
  void setTrace(bool trace) noexcept { trace_ = trace; }

  // Raw deflate, one-shot.
  bool deflateBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                     ProgressMonitor* progress = nullptr);
  /// Bytes behind the final block are left alone: unusedInput() counts them.
  bool inflateBuffer(ByteSpan in, DataBuffer& out, LogBase& log);

  // With the zlib framing, one-shot.
  bool zlibCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                    ProgressMonitor* progress = nullptr);
  /// A header alone gives no output and succeeds.
  bool zlibDecompress(ByteSpan in, DataBuffer& out, LogBase& log);

  // Raw deflate, as every engine offers it.
  bool compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress) override;
  bool decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                        ProgressMonitor* progress) override;
  bool beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                     ProgressMonitor* progress) override;
  bool moreCompress(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  bool beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                       ProgressMonitor* progress = nullptr) override;
  /// Input behind the final block is left alone.
  bool moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                      ProgressMonitor* progress = nullptr) override;
  bool endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) override;
  /// Stops reading at the block that the stream ends in: unusedInput() counts what is left of it.
  bool decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                        ProgressMonitor* progress) override;

  /// The same with a zlib header in front; More and End are those above. Nothing follows the
  /// stream: its Adler-32 is not written (deliberate), so that strict readers may refuse it.
  bool beginZlibCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                         ProgressMonitor* progress = nullptr);
  /// The header must come in one piece.
  bool beginZlibDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                           ProgressMonitor* progress = nullptr);

  /// The stream last decompressed has reached the end of its final block.
  bool reachedEnd() const noexcept { return reachedEnd_; }
  /// How many bytes at the end of the last input are behind the final block.
  std::size_t unusedInput() const noexcept { return unusedInput_; }

 private:
  bool deflateSome(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress,
                   bool& abort);
  bool takeOutput(DataBuffer& out, LogBase& log);
  bool abandonCompression(LogBase& log, const char* reason);
  void freshInflater();
  template <class Take>
  bool inflatePiece(ByteSpan in, LogBase& log, ProgressMonitor* progress, const char* errorTag,
                    const Take& take);

  int level_ = kDefaultLevel;
  bool trace_ = false;
  bool compressing_ = false;    // between Begin and End
  bool decompressing_ = false;  // after Begin
  bool reachedEnd_ = false;
  std::size_t unusedInput_ = 0;
  // Kept from stream to stream: fresh memory costs more time than a short stream.
  std::unique_ptr<ZeeStream> stream_;
  std::unique_ptr<InflateState2> inflater_;
  std::unique_ptr<std::uint8_t[]> staging_;
};

}  // namespace zantrel

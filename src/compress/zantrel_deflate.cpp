#include "compress/zantrel_deflate.h"

#include <algorithm>
#include <utility>

#include "compress/adler32.h"
#include "compress/growing_output.h"
#include "core/byte_order.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {

namespace {

// Deflate, 32 KiB window, default level, no dictionary: written whatever the level (deliberate).
constexpr std::uint8_t kZlibHeader[] = {0x78, 0x9C};
constexpr std::uint8_t kPresetDictionary = 0x20;  // flag in the header's second byte
constexpr std::size_t kDictionaryIdSize = 4;

constexpr std::size_t kSourceBlock = 65536;

bool aborted(ProgressMonitor* progress, std::size_t bytesDone) {
  if (progress == nullptr) return false;
  progress->consume(static_cast<std::int64_t>(bytesDone));
  return progress->aborted();
}

bool failed(LogBase& log, const char* reason) {
  log.logError(reason);
  return false;
}

bool append(DataBuffer& out, ByteSpan bytes, LogBase& log) {
  return appendDoubling(out, bytes) || failed(log, "Not enough memory.");
}

// Takes the zlib header, and the dictionary's identifier if there is one, off the front.
bool takeZlibHeader(ByteSpan& in, LogBase& log) {
  if (in.size() < sizeof kZlibHeader)
    return failed(log, "Not enough data for beginning Zlib decompression.");
  std::size_t size = sizeof kZlibHeader;
  if ((in[1] & kPresetDictionary) != 0) {
    size += kDictionaryIdSize;
    if (in.size() < size)
      return failed(log, "Not enough data for beginning Zlib decompression with dict.");
  }
  in = in.subspan(size);
  return true;
}

}  // namespace

ZantrelDeflate::ZantrelDeflate()
    : staging_(std::make_unique_for_overwrite<std::uint8_t[]>(kStagingSize)) {}

ZantrelDeflate::~ZantrelDeflate() = default;

// Compression

bool ZantrelDeflate::deflateBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                   ProgressMonitor* progress) {
  return beginCompress(in, out, log, progress) && endCompress(out, log, progress);
}

bool ZantrelDeflate::compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                    ProgressMonitor* progress) {
  return deflateBuffer(in, out, log, progress);
}

bool ZantrelDeflate::zlibCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                  ProgressMonitor* progress) {
  std::uint8_t trailer[sizeof(std::uint32_t)];
  storeWord<std::endian::big>(Adler32::getAdler(in), trailer);
  return beginZlibCompress(in, out, log, progress) && endCompress(out, log, progress) &&
         append(out, trailer, log);
}

bool ZantrelDeflate::beginZlibCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                       ProgressMonitor* progress) {
  return append(out, kZlibHeader, log) && beginCompress(in, out, log, progress);
}

bool ZantrelDeflate::beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                   ProgressMonitor* progress) {
  if (stream_)
    stream_->restart(level_);
  else
    stream_ = std::make_unique<ZeeStream>(level_);
  compressing_ = true;
  bool abort = false;
  const bool done = deflateSome(in, out, log, progress, abort);
  if (abort) log.logError("Deflate aborted by application (1)");
  return done;
}

bool ZantrelDeflate::moreCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                  ProgressMonitor* progress) {
  bool abort = false;
  const bool done = deflateSome(in, out, log, progress, abort);
  if (abort) log.logError("Deflate aborted by application (2)");
  return done;
}

bool ZantrelDeflate::deflateSome(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress, bool& abort) {
  if (!compressing_) return failed(log, "Deflate not initialized.");
  stream_->nextInput = in.data();
  stream_->inputLeft = in.size();
  while (stream_->inputLeft > 0 || stream_->hasPendingOutput()) {
    const std::size_t before = stream_->inputLeft;
    stream_->nextOutput = staging_.get();
    stream_->outputSpace = kStagingSize;
    if (stream_->step(false) != ZeeStream::Status::more)
      return abandonCompression(log, "Zlib compression stream error (2).");
    if (!takeOutput(out, log)) return false;
    abort = aborted(progress, before - stream_->inputLeft);
    compressing_ = !abort;
    if (abort) return false;
  }
  return true;
}

bool ZantrelDeflate::endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
  if (!compressing_) return failed(log, "Deflate not initialized.");
  if (stream_->hasPendingOutput())
    return abandonCompression(log, "Unexpected pending output in Zlib compression stream.");
  stream_->nextInput = nullptr;
  stream_->inputLeft = 0;
  for (auto status = ZeeStream::Status::more; status != ZeeStream::Status::finished;) {
    stream_->nextOutput = staging_.get();
    stream_->outputSpace = kStagingSize;
    status = stream_->step(true);
    if (status == ZeeStream::Status::failed)
      return abandonCompression(log, "Zlib compression stream error (2).");
    if (!takeOutput(out, log)) return false;
    if (aborted(progress, 0)) {
      log.logError("Deflate aborted by application (3)");
      compressing_ = false;
      return false;
    }
  }
  compressing_ = false;
  return true;
}

bool ZantrelDeflate::takeOutput(DataBuffer& out, LogBase& log) {
  if (append(out, {staging_.get(), kStagingSize - stream_->outputSpace}, log)) return true;
  compressing_ = false;
  return false;
}

bool ZantrelDeflate::abandonCompression(LogBase& log, const char* reason) {
  compressing_ = false;
  return failed(log, reason);
}

// Decompression

void ZantrelDeflate::freshInflater() {
  if (inflater_)
    inflater_->reset();
  else
    inflater_ = std::make_unique<InflateState2>();
  decompressing_ = reachedEnd_ = false;
  unusedInput_ = 0;
}

bool ZantrelDeflate::inflateBuffer(ByteSpan in, DataBuffer& out, LogBase& log) {
  freshInflater();
  inflater_->setTrace(trace_ ? &log : nullptr);
  const InflateState2::Status status = inflater_->inflateAll(in, out, maxDecompressedSize());
  unusedInput_ = in.size();
  reachedEnd_ = status == InflateState2::Status::finished;
  if (reachedEnd_) return true;
  if (status == InflateState2::Status::more) return failed(log, "Deflated data ended prematurely.");
  if (inflater_->errorCode() == InflateError::outputLimit)
    return withinLimit(inflater_->totalProduced() + 1, log);
  log.logDataLong("deflateError", static_cast<std::int32_t>(inflater_->errorCode()));
  return false;
}

bool ZantrelDeflate::decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                      ProgressMonitor* progress) {
  if (progress == nullptr) return inflateBuffer(in, out, log);
  freshInflater();
  return inflatePiece(in, log, progress, "deflateError",
                      [&](ByteSpan piece) { return append(out, piece, log); }) &&
         (reachedEnd_ || failed(log, "Deflated data ended prematurely."));
}

bool ZantrelDeflate::zlibDecompress(ByteSpan in, DataBuffer& out, LogBase& log) {
  return takeZlibHeader(in, log) && (in.empty() || inflateBuffer(in, out, log));
}

bool ZantrelDeflate::beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                     ProgressMonitor* progress) {
  freshInflater();
  decompressing_ = true;
  return moreDecompress(in, out, log, progress);
}

bool ZantrelDeflate::beginZlibDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                         ProgressMonitor* progress) {
  freshInflater();
  return takeZlibHeader(in, log) && beginDecompress(in, out, log, progress);
}

bool ZantrelDeflate::moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                    ProgressMonitor* progress) {
  if (!decompressing_) return failed(log, "Inflator not initialized.");
  return inflatePiece(in, log, progress, "InflateErr",
                      [&](ByteSpan piece) { return append(out, piece, log); });
}

bool ZantrelDeflate::endDecompress(DataBuffer&, LogBase& log, ProgressMonitor*) {
  if (!std::exchange(decompressing_, false)) return failed(log, "Inflator not initialized.");
  return reachedEnd_ || failed(log, "Deflated data ended prematurely.");
}

bool ZantrelDeflate::decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                                      ProgressMonitor* progress) {
  freshInflater();
  while (!reachedEnd_) {
    ByteSpan block;
    if (!source.nextBlock(kSourceBlock, block, log))
      return failed(log, "Inflate from data source failed.");
    if (block.empty()) return failed(log, "Deflated data ended prematurely.");
    if (!inflatePiece(block, log, progress, "InflateErrorCode",
                      [&](ByteSpan piece) { return sink.write(piece, log); }))
      return failed(log, "Inflate from data source failed.");
  }
  return true;
}

// Gives `take` the output a stage at a time; false from it, which it has logged, ends the stream,
// as any failure does.
template <class Take>
bool ZantrelDeflate::inflatePiece(ByteSpan in, LogBase& log, ProgressMonitor* progress,
                                  const char* errorTag, const Take& take) {
  using Status = InflateState2::Status;
  inflater_->setTrace(trace_ ? &log : nullptr);
  const std::uint64_t limit = maxDecompressedSize();
  unusedInput_ = in.size();
  for (bool full = true; !reachedEnd_ && (full || !in.empty());) {
    std::size_t produced = 0;
    const Status status = inflater_->run(in, {staging_.get(), kStagingSize}, produced);
    const std::size_t used = std::exchange(unusedInput_, in.size()) - in.size();
    const std::uint64_t total = inflater_->totalProduced();
    const bool fits = limit == 0 || total <= limit;
    full = produced == kStagingSize;
    reachedEnd_ = status == Status::finished;
    decompressing_ = false;
    if (!fits) produced -= static_cast<std::size_t>(total - limit);
    if (!take(ByteSpan(staging_.get(), produced))) return false;
    if (!fits) return withinLimit(total, log);
    if (status == Status::failed) {
      log.logDataLong(errorTag, static_cast<std::int32_t>(inflater_->errorCode()));
      return false;
    }
    if (aborted(progress, used))
      return failed(log, "Inflate aborted by application event callback.");
    if (status == Status::more && !full && !in.empty())
      return failed(log, "Internal error occurred when inflating from data source.");
    decompressing_ = true;
  }
  return true;
}

}  // namespace zantrel

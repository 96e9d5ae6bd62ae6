#include "compress/ppmd_engine.h"

#include <algorithm>

#include "compress/stream_steps.h"

namespace zantrel {

namespace {

constexpr std::size_t kHeaderBytes = 2;
constexpr std::size_t kCodeBytes = 4;  // the range coder's first, before any symbol
constexpr std::size_t kStagingBytes = 32768;

bool aborted(ProgressMonitor* progress, std::size_t consumed, LogBase& log) {
  if (!wantsAbort(progress, consumed)) return false;
  log.logError("PPMd aborted by application");
  return true;
}

bool fail(LogBase& log, const char* reason) {
  log.logError(reason);
  return false;
}

}  // namespace

struct PpmdEngine::Compression {
  PpmdEncoder encoder;
  std::array<std::uint8_t, kStagingBytes> staging;
};

struct PpmdEngine::Decompression {
  PpmdDecoder decoder;
  DataBuffer held;  // input not decoded yet: a symbol is decoded when all its bytes must be there
  bool started = false;
  bool finished = false;
  bool surplusLogged = false;
  std::uint64_t total = 0;
  std::array<std::uint8_t, kStagingBytes> staging;
};

PpmdEngine::PpmdEngine() = default;
PpmdEngine::~PpmdEngine() = default;

void PpmdEngine::setModel(unsigned order, unsigned memoryMb, PpmdRestore restore) {
  order_ = std::clamp(order, kMinOrder, kMaxOrder);
  memoryMb_ = std::clamp(memoryMb, 1u, kMaxMemoryMb);
  restore_ = restore;
}

bool PpmdEngine::compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) {
  return beginCompress(in, out, log, progress) && endCompress(out, log, progress);
}

bool PpmdEngine::decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                  ProgressMonitor* progress) {
  return beginDecompress(in, out, log, progress) && endDecompress(out, log, progress);
}

bool PpmdEngine::beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                               ProgressMonitor* progress) {
  if (compression_ == nullptr) compression_ = std::make_unique<Compression>();
  if (!compression_->encoder.start(order_, memoryMb_ << 20, restore_)) {
    compression_.reset();
    return fail(log, "There is not enough memory for the PPMd model.");
  }
  const unsigned header =
      (order_ - 1) + ((memoryMb_ - 1) << 4) + (static_cast<unsigned>(restore_) << 12);
  out.appendChar(static_cast<std::uint8_t>(header));
  out.appendChar(static_cast<std::uint8_t>(header >> 8));
  return moreCompress(in, out, log, progress);
}

bool PpmdEngine::moreCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                              ProgressMonitor* progress) {
  if (compression_ == nullptr) return fail(log, "PPMd not initialized.");
  const bool done = inBlocks(in, [&](ByteSpan block) {
    const std::size_t consumed = block.size();
    while (!block.empty()) {
      const std::size_t written = compression_->encoder.encode(block, compression_->staging);
      if (!appendOutput(out, ByteSpan(compression_->staging).first(written), log)) return false;
    }
    return !aborted(progress, consumed, log);
  });
  if (!done) compression_.reset();
  return done;
}

bool PpmdEngine::endCompress(DataBuffer& out, LogBase& log, ProgressMonitor*) {
  if (compression_ == nullptr) return fail(log, "PPMd not initialized.");
  const std::size_t written = compression_->encoder.finish(compression_->staging);
  const bool done = appendOutput(out, ByteSpan(compression_->staging).first(written), log);
  compression_.reset();
  return done;
}

bool PpmdEngine::beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress) {
  decompression_ = std::make_unique<Decompression>();
  return moreDecompress(in, out, log, progress);
}

bool PpmdEngine::moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) {
  if (decompression_ == nullptr) return fail(log, "PPMd not initialized.");
  const bool done = inBlocks(in, [&](ByteSpan block) {
    DataBuffer& held = decompression_->held;
    if (!held.reserve(block.size()) || !held.append(block))
      return fail(log, "There is not enough memory for the input.");
    if (!decompression_->started && held.getSize() >= kHeaderBytes + kCodeBytes && !readHeader(log))
      return false;
    ByteSpan rest = held.bytes();
    if (decompression_->started && !decodeHeld(rest, out, log)) return false;
    held.removeFront(static_cast<std::uint32_t>(held.getSize() - rest.size()));
    return !aborted(progress, block.size(), log);
  });
  if (!done) decompression_.reset();
  return done;
}

bool PpmdEngine::readHeader(LogBase& log) {
  DataBuffer& held = decompression_->held;
  const ByteSpan bytes = held.bytes();
  const unsigned header = bytes[0] + (unsigned{bytes[1]} << 8);
  const unsigned order = (header & 15) + 1;
  const unsigned memoryMb = (header >> 4 & 255) + 1;
  const unsigned restore = header >> 12;
  if (order < kMinOrder || restore > static_cast<unsigned>(PpmdRestore::CutOff)) {
    log.logDataLong("order", static_cast<std::int32_t>(order));
    log.logDataLong("restoreMethod", static_cast<std::int32_t>(restore));
    return fail(log, "The PPMd data have a header that is not supported.");
  }
  if (!decompression_->decoder.start(order, memoryMb << 20, static_cast<PpmdRestore>(restore),
                                     bytes.subspan(kHeaderBytes, kCodeBytes)))
    return fail(log, "There is not enough memory for the PPMd model.");
  held.removeFront(kHeaderBytes + kCodeBytes);
  decompression_->started = true;
  return true;
}

// Decodes all symbols whose bytes are certain to be there; `held` is what remains.
bool PpmdEngine::decodeHeld(ByteSpan& held, DataBuffer& out, LogBase& log) {
  Decompression& state = *decompression_;
  while (!state.finished && held.size() >= kPpmdSymbolBytes) {
    std::size_t produced = 0;
    const PpmdDecoder::Status status = state.decoder.decode(held, state.staging, produced);
    if (!release(ByteSpan(state.staging).first(produced), out, log)) return false;
    if (status == PpmdDecoder::Status::Damaged) return fail(log, "The PPMd data are damaged.");
    state.finished = status == PpmdDecoder::Status::Finished;
  }
  if (state.finished && !held.empty()) {
    if (!state.surplusLogged) log.logInfo("Bytes after the end of the PPMd data were ignored.");
    state.surplusLogged = true;
    held = {};
  }
  return true;
}

bool PpmdEngine::release(ByteSpan bytes, DataBuffer& out, LogBase& log) {
  decompression_->total += bytes.size();
  if (!withinLimit(decompression_->total, log)) return false;
  return appendOutput(out, bytes, log);
}

bool PpmdEngine::endDecompress(DataBuffer& out, LogBase& log, ProgressMonitor*) {
  if (decompression_ == nullptr) return fail(log, "PPMd not initialized.");
  const bool done = decompression_->finished || !decompression_->started || decodeRest(out, log);
  const bool ended = decompression_->finished;
  decompression_.reset();
  if (done && !ended) return fail(log, "The PPMd data ended prematurely.");
  return done;
}

// The last symbols, one at a time, with zeros behind their bytes: what needs more than there is
// does not count.
bool PpmdEngine::decodeRest(DataBuffer& out, LogBase& log) {
  Decompression& state = *decompression_;
  std::array<std::uint8_t, 2 * kPpmdSymbolBytes> padded{};
  const ByteSpan rest = state.held.bytes();
  std::copy(rest.begin(), rest.end(), padded.begin());
  ByteSpan in(padded);
  for (;;) {
    std::uint8_t symbol = 0;
    std::size_t produced = 0;
    const PpmdDecoder::Status status = state.decoder.decode(in, {&symbol, 1}, produced);
    if (padded.size() - in.size() > rest.size()) return true;  // not ended
    if (status == PpmdDecoder::Status::Damaged) return fail(log, "The PPMd data are damaged.");
    if (status == PpmdDecoder::Status::Finished) {
      state.finished = true;
      if (padded.size() - in.size() < rest.size())
        log.logInfo("Bytes after the end of the PPMd data were ignored.");
      return true;
    }
    if (!release({&symbol, produced}, out, log)) return false;
  }
}

}  // namespace zantrel

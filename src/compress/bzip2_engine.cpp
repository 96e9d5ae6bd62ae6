#include "compress/bzip2_engine.h"

#include "compress/stream_steps.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"

namespace zantrel {

namespace {

bool fail(LogBase& log, const char* reason) {
  log.logError(reason);
  return false;
}

bool mayGoOn(ProgressMonitor* progress, std::size_t consumed, LogBase& log) {
  const bool abort = wantsAbort(progress, consumed);
  if (abort) log.logError("Bzip2 aborted by application");
  return !abort;
}

}  // namespace

bool Bzip2Engine::compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress) {
  return beginCompress(in, out, log, progress) && endCompress(out, log, progress);
}

bool Bzip2Engine::decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                   ProgressMonitor* progress) {
  return beginDecompress(in, out, log, progress) && endDecompress(out, log, progress);
}

bool Bzip2Engine::beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) {
  encoder_ = std::make_unique<Bzip2Encoder>();
  return moreCompress(in, out, log, progress);
}

bool Bzip2Engine::moreCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                               ProgressMonitor* progress) {
  if (encoder_ == nullptr) return fail(log, "Bzip2 not initialized.");
  const bool done = inBlocks(in, [&](ByteSpan block) {
    const std::size_t size = block.size();
    while (!block.empty()) {
      encoder_->add(block);
      if (!appendOutput(out, encoder_->output(), log)) return false;
      encoder_->dropOutput();
    }
    return mayGoOn(progress, size, log);
  });
  if (!done) encoder_.reset();
  return done;
}

bool Bzip2Engine::endCompress(DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
  if (encoder_ == nullptr) return fail(log, "Bzip2 not initialized.");
  encoder_->finish();
  const bool done = appendOutput(out, encoder_->output(), log) && mayGoOn(progress, 0, log);
  encoder_.reset();
  return done;
}

// Hands over what a piece of input stands for, bit by bit; each bit is followed by the question
// whether to go on, since a small input may stand for very much.
template <class Take>
bool Bzip2Engine::decode(ByteSpan in, Take take, LogBase& log, ProgressMonitor* progress) {
  const bool done = inBlocks(in, [&](ByteSpan block) {
    decoder_->feed(block);
    for (;;) {
      const Bzip2Decoder::Status status = decoder_->advance(log);
      if (status == Bzip2Decoder::Status::failed) return false;
      if (status == Bzip2Decoder::Status::needsInput) return mayGoOn(progress, block.size(), log);
      decodedSize_ += decoder_->output().size();
      if (!withinLimit(decodedSize_, log) || !take(decoder_->output()) ||
          !mayGoOn(progress, 0, log))
        return false;
    }
  });
  if (!done) decoder_.reset();
  return done;
}

bool Bzip2Engine::beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                  ProgressMonitor* progress) {
  decoder_ = std::make_unique<Bzip2Decoder>();
  decodedSize_ = 0;
  return moreDecompress(in, out, log, progress);
}

bool Bzip2Engine::moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress) {
  if (decoder_ == nullptr) return fail(log, "Bzip2 not initialized.");
  return decode(
      in, [&](ByteSpan bytes) { return appendOutput(out, bytes, log); }, log, progress);
}

bool Bzip2Engine::endDecompress(DataBuffer&, LogBase& log, ProgressMonitor*) {
  if (decoder_ == nullptr) return fail(log, "Bzip2 not initialized.");
  const bool done = decoder_->finish(log);
  decoder_.reset();
  return done;
}

bool Bzip2Engine::decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                                   ProgressMonitor* progress) {
  DataBuffer none;
  if (!beginDecompress({}, none, log, progress)) return false;
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kInputBlock, block, log)) return false;
    if (block.empty()) return endDecompress(none, log, progress);
    if (!decode(
            block, [&](ByteSpan bytes) { return sink.write(bytes, log); }, log, progress))
      return false;
  }
}

}  // namespace zantrel

#include "compress/lzw_engine.h"

#include <memory>

#include "compress/lzw_decoder.h"
#include "compress/lzw_encoder.h"
#include "compress/stream_steps.h"
#include "core/data_sink.h"
#include "core/data_source.h"

namespace zantrel {

namespace {

bool notImplemented(LogBase& log) {
  log.logError("LZW begin/more/end not implemented yet.");
  return false;
}

bool mayGoOn(ProgressMonitor* progress, std::size_t consumed, LogBase& log) {
  const bool abort = wantsAbort(progress, consumed);
  if (abort) log.logError("LZW aborted by application");
  return !abort;
}

// Both hand what they produce to `take` and stop when that fails.
template <class Take>
bool encode(DataSource& source, Take take, LogBase& log, ProgressMonitor* progress) {
  LzwEncoder encoder;
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kInputBlock, block, log)) return false;
    if (block.empty())
      encoder.finish();
    else
      encoder.add(block);
    if (!take(encoder.output()) || !mayGoOn(progress, block.size(), log)) return false;
    if (block.empty()) return true;
    encoder.dropOutput();
  }
}

template <class Take>
bool decode(DataSource& source, Take take, LogBase& log, ProgressMonitor* progress) {
  const auto decoder = std::make_unique<LzwDecoder>();
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kInputBlock, block, log)) return false;
    if (block.empty()) return decoder->finish(log);
    decoder->feed(block);
    LzwDecoder::Status status;
    while ((status = decoder->advance(log)) == LzwDecoder::Status::hasOutput)
      if (!take(decoder->output()) || !mayGoOn(progress, 0, log)) return false;
    if (status == LzwDecoder::Status::failed || !mayGoOn(progress, block.size(), log)) return false;
  }
}

}  // namespace

bool LzwEngine::compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                               ProgressMonitor* progress) {
  MemoryDataSource source(in);
  return encode(
      source, [&](ByteSpan bytes) { return appendOutput(out, bytes, log); }, log, progress);
}

bool LzwEngine::compressSource(DataSource& source, DataSink& sink, LogBase& log,
                               ProgressMonitor* progress) {
  return encode(
      source, [&](ByteSpan bytes) { return sink.write(bytes, log); }, log, progress);
}

bool LzwEngine::decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress) {
  MemoryDataSource source(in);
  std::uint64_t total = 0;
  const auto take = [&](ByteSpan bytes) {
    return withinLimit(total += bytes.size(), log) && appendOutput(out, bytes, log);
  };
  return decode(source, take, log, progress);
}

bool LzwEngine::decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                                 ProgressMonitor* progress) {
  std::uint64_t total = 0;
  const auto take = [&](ByteSpan bytes) {
    return withinLimit(total += bytes.size(), log) && sink.write(bytes, log);
  };
  return decode(source, take, log, progress);
}

bool LzwEngine::beginCompress(ByteSpan, DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

bool LzwEngine::moreCompress(ByteSpan, DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

bool LzwEngine::endCompress(DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

bool LzwEngine::beginDecompress(ByteSpan, DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

bool LzwEngine::moreDecompress(ByteSpan, DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

bool LzwEngine::endDecompress(DataBuffer&, LogBase& log, ProgressMonitor*) {
  return notImplemented(log);
}

}  // namespace zantrel

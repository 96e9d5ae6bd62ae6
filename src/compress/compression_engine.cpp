#include "compress/compression_engine.h"

#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"

namespace zantrel {

namespace {

// Large enough that calls cost nothing, small enough that the output of one block of the most
// compressible data stays small.
constexpr std::size_t kSourceBlock = 65536;

// Feeds all blocks of a source to `step` and moves what it produced to the sink after each.
template <class Step>
bool pump(DataSource& source, DataSink& sink, LogBase& log, DataBuffer& out, Step step) {
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kSourceBlock, block, log)) return false;
    if (block.empty()) return true;
    const bool done = step(block);
    if (!sink.write(out.bytes(), log) || !done) return false;
    out.clear();
  }
}

}  // namespace

bool CompressionEngine::compressSource(DataSource& source, DataSink& sink, LogBase& log,
                                       ProgressMonitor* progress) {
  DataBuffer out;
  return beginCompress({}, out, log, progress) &&
         pump(source, sink, log, out,
              [&](ByteSpan in) { return moreCompress(in, out, log, progress); }) &&
         endCompress(out, log, progress) && sink.write(out.bytes(), log);
}

bool CompressionEngine::decompressSource(DataSource& source, DataSink& sink, LogBase& log,
                                         ProgressMonitor* progress) {
  DataBuffer out;
  return beginDecompress({}, out, log, progress) &&
         pump(source, sink, log, out,
              [&](ByteSpan in) { return moreDecompress(in, out, log, progress); }) &&
         endDecompress(out, log, progress) && sink.write(out.bytes(), log);
}

bool CompressionEngine::withinLimit(std::uint64_t total, LogBase& log) const {
  if (maxDecompressedSize_ == 0 || total <= maxDecompressedSize_) return true;
  log.logError("The decompressed data are larger than the limit that was set.");
  log.logData64("maxDecompressedSize", static_cast<std::int64_t>(maxDecompressedSize_));
  return false;
}

}  // namespace zantrel

#include "compress/copy_engine.h"

#include "compress/growing_output.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {
namespace {

bool copy(ByteSpan in, DataBuffer& out, LogBase& log, ProgressMonitor* progress) {
  if (!appendDoubling(out, in)) {
    log.logError("Out of memory.");
    return false;
  }
  if (progress == nullptr) return true;
  progress->consume(static_cast<std::int64_t>(in.size()));
  if (!progress->aborted()) return true;
  log.logError("Aborted by the application.");
  return false;
}

}  // namespace

bool CopyEngine::compressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) {
  return copy(in, out, log, progress);
}

bool CopyEngine::decompressBuffer(ByteSpan in, DataBuffer& out, LogBase& log,
                                  ProgressMonitor* progress) {
  return beginDecompress(in, out, log, progress);
}

bool CopyEngine::beginCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                               ProgressMonitor* progress) {
  return copy(in, out, log, progress);
}

bool CopyEngine::moreCompress(ByteSpan in, DataBuffer& out, LogBase& log,
                              ProgressMonitor* progress) {
  return copy(in, out, log, progress);
}

bool CopyEngine::endCompress(DataBuffer&, LogBase&, ProgressMonitor*) {
  return true;
}

bool CopyEngine::beginDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                 ProgressMonitor* progress) {
  produced_ = 0;
  return moreDecompress(in, out, log, progress);
}

bool CopyEngine::moreDecompress(ByteSpan in, DataBuffer& out, LogBase& log,
                                ProgressMonitor* progress) {
  produced_ += in.size();
  return withinLimit(produced_, log) && copy(in, out, log, progress);
}

bool CopyEngine::endDecompress(DataBuffer&, LogBase&, ProgressMonitor*) {
  return true;
}

}  // namespace zantrel

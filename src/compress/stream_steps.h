#pragma once
// What engines do alike with their input and output.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "compress/growing_output.h"
#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {

constexpr std::size_t kInputBlock = 65536;  ///< bytes between two questions whether to go on

/// Calls `step` with blocks of the input until one fails.
template <class Step>
bool inBlocks(ByteSpan in, Step step) {
  while (!in.empty()) {
    const ByteSpan block = in.first(std::min(in.size(), kInputBlock));
    in = in.subspan(block.size());
    if (!step(block)) return false;
  }
  return true;
}

inline bool appendOutput(DataBuffer& out, ByteSpan bytes, LogBase& log) {
  if (appendDoubling(out, bytes)) return true;
  log.logError("There is not enough memory for the output.");
  return false;
}

/// Reports input, and tells whether an event handler asked to stop.
inline bool wantsAbort(ProgressMonitor* progress, std::size_t consumed) {
  bool abort = false;
  if (progress != nullptr) progress->consume(static_cast<std::int64_t>(consumed), abort);
  return abort;
}

}  // namespace zantrel

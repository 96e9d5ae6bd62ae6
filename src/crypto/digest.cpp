#include "crypto/digest.h"

#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {

bool consumeSource(DataSource& source, ProgressMonitor* progress, LogBase& log,
                   const char* abortText, const BlockConsumer& consumer) {
  // Applications count on the pace of the progress reports that this size gives.
  constexpr std::size_t kSourceBlock = 20000;
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kSourceBlock, block, log)) return false;
    if (block.empty()) return true;
    consumer.absorb(consumer.context, block);
    if (progress == nullptr) continue;
    bool abort = false;
    progress->consume(static_cast<std::int64_t>(block.size()), abort);
    if (abort || progress->aborted()) {
      log.logError(abortText);
      return false;
    }
  }
}

}  // namespace zantrel

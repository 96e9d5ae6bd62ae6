#include "frame/progress_monitor.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "platform/clock.h"

namespace zantrel {

ProgressMonitor::ProgressMonitor(ProgressEvent* sink, std::int64_t total)
    : total_(total), sink_(sink != nullptr ? sink : &ownSink_), lastCallbackTick_(tickCountMs()) {}

ProgressMonitor::ProgressMonitor(ProgressEvent* sink, std::uint32_t totalLow,
                                 std::uint32_t totalHigh)
    : ProgressMonitor(sink,
                      static_cast<std::int64_t>((std::uint64_t{totalHigh} << 32) | totalLow)) {}

std::uint32_t ProgressMonitor::percent(std::int64_t done, std::int64_t total) {
  // Deliberately coarse for large totals: both are cut to six digits first.
  constexpr std::int64_t kLargestTotal = 1'000'000;
  if (total <= 0) return 100;
  for (; total > kLargestTotal; total /= 10) done /= 10;
  done = std::clamp<std::int64_t>(done, 0, std::numeric_limits<std::uint32_t>::max() / 100);
  return static_cast<std::uint32_t>(done * 100 / total);
}

void ProgressMonitor::consume(std::int64_t n, bool& abort) {
  const std::int64_t left = total_ - consumed_;
  advanceTo(n >= left ? total_ : consumed_ + std::max<std::int64_t>(n, 0), abort);
}

void ProgressMonitor::consume(std::int64_t n) {
  bool ignored = false;
  consume(n, ignored);
}

void ProgressMonitor::setPercent(std::int64_t done, bool& abort) {
  advanceTo(done, abort);
}

void ProgressMonitor::advanceTo(std::int64_t done, bool& abort) {
  if (disabled_) return;
  abort = false;
  const std::uint32_t before = percent(consumed_, total_);
  consumed_ = std::clamp<std::int64_t>(done, 0, std::max<std::int64_t>(total_, 0));
  const std::uint32_t after = percent(consumed_, total_);
  const std::uint32_t now = tickCountMs();
  if (after > before && after > lastPercent_) {
    lastCallbackTick_ = now;
    if (holdFinal100_ && after == 100) return;
    lastPercent_ = after;
    sink_->PercentDone(after, abort);
    aborted_ = aborted_ || abort;
  } else if (!suppressHeartbeat_) {
    const std::uint32_t interval = heartbeatMs_ != 0 ? heartbeatMs_ : kDefaultHeartbeatMs;
    if (now - lastCallbackTick_ > interval) askAbort(now, abort);
  }
}

void ProgressMonitor::askAbort(std::uint32_t now, bool& abort) {
  lastCallbackTick_ = lastHeartbeatTick_ = now;
  abort = false;
  sink_->AbortCheck(abort);
  aborted_ = aborted_ || abort;
}

bool ProgressMonitor::abortCheck(std::uint32_t heartbeatMs) {
  if (disabled_ || aborted_) return aborted_;
  bool abort = false;
  const std::uint32_t now = tickCountMs();
  if (heartbeatMs != 0) {
    heartbeatMs_ = heartbeatMs;
    if (now <= lastHeartbeatTick_) {
      lastHeartbeatTick_ = now;  // the tick count has wrapped
    } else if (now - lastHeartbeatTick_ >= heartbeatMs) {
      askAbort(now, abort);
    }
  } else if (now - lastCallbackTick_ > kDefaultHeartbeatMs) {
    askAbort(now, abort);
  }
  return aborted_;
}

void ProgressMonitor::progressInfo(const char* name, std::int32_t number) {
  progressInfo64(name, number);
}

void ProgressMonitor::progressInfo64(const char* name, std::int64_t number) {
  if (disabled_) return;
  char text[24];
  *std::to_chars(text, text + sizeof text - 1, number).ptr = '\0';
  sink_->ProgressInfo(name, text);
}

void ProgressMonitor::end() {
  if (disabled_) return;
  bool abort = false;
  advanceTo(total_, abort);
  if (!holdFinal100_ || lastPercent_ == 100) return;
  lastPercent_ = 100;
  abort = false;
  sink_->PercentDone(100, abort);
  aborted_ = aborted_ || abort;
}

void ProgressMonitor::reset(std::int64_t total) {
  total_ = total;
  consumed_ = 0;
  lastPercent_ = 0;
}

}  // namespace zantrel

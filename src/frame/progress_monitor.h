#pragma once

#include <cstdint>

#include "frame/async_progress_event.h"

namespace zantrel {

/// Turns an engine's counts of work done into callbacks: PercentDone when the whole percentage
/// rises, otherwise AbortCheck at most once per heartbeat. Lives for one operation; once a callback
/// has answered abort it stays aborted.
class ProgressMonitor {
 public:
  /// Interval between AbortChecks when none is set, in milliseconds.
  static constexpr std::uint32_t kDefaultHeartbeatMs = 300;

  /// Without a sink the monitor is its own: it keeps the percentage and never aborts. The sink is
  /// not owned.
  explicit ProgressMonitor(ProgressEvent* sink = nullptr, std::int64_t total = 100);
  ProgressMonitor(ProgressEvent* sink, std::uint32_t totalLow, std::uint32_t totalHigh);
  ProgressMonitor(const ProgressMonitor&) = delete;
  ProgressMonitor& operator=(const ProgressMonitor&) = delete;

  /// Whole percentage of `done` in `total`: 100 when the total is not positive.
  static std::uint32_t percent(std::int64_t done, std::int64_t total);

  /// n more units are done. `abort` becomes what the callback made now answers, else false; it
  /// stays as it is while the monitor is disabled.
  void consume(std::int64_t n, bool& abort);
  /// The same without the answer; ask aborted().
  void consume(std::int64_t n);
  /// `done` units are done in all. Going back moves the count, not what was reported.
  void setPercent(std::int64_t done, bool& abort);
  /// For engines that wait. A heartbeat other than 0 is remembered and paces the callbacks; 0 takes
  /// the default pace. True when the operation is to stop.
  bool abortCheck(std::uint32_t heartbeatMs);
  /// Passes a named number to the sink.
  void progressInfo(const char* name, std::int32_t number);
  void progressInfo64(const char* name, std::int64_t number);
  /// The work is done: consumes what remains and reports 100 if that was held back.
  void end();

  bool aborted() const { return aborted_; }
  /// Starts over with a new total; an abort stays.
  void reset(std::int64_t total);

  /// 0 selects the default.
  void setHeartbeatMs(std::uint32_t ms) { heartbeatMs_ = ms; }
  /// Makes every call do nothing; abortCheck() then answers aborted().
  void setDisabled(bool disabled) { disabled_ = disabled; }
  /// Holds back a percentage of exactly 100 until end().
  void setHoldFinal100(bool hold) { holdFinal100_ = hold; }
  /// Keeps consume() and setPercent() from asking AbortCheck.
  void setSuppressHeartbeat(bool suppress) { suppressHeartbeat_ = suppress; }

  std::int64_t total() const { return total_; }
  std::int64_t consumed() const { return consumed_; }
  std::uint32_t lastPercent() const { return lastPercent_; }
  /// The monitor's own sink, in use when none was given.
  AsyncProgressEvent& ownSink() { return ownSink_; }

 private:
  void advanceTo(std::int64_t done, bool& abort);
  void askAbort(std::uint32_t now, bool& abort);

  AsyncProgressEvent ownSink_;
  std::int64_t total_;
  std::int64_t consumed_ = 0;
  std::uint32_t lastPercent_ = 0;
  ProgressEvent* sink_;  // never null
  bool aborted_ = false;
  std::uint32_t lastCallbackTick_;
  std::uint32_t heartbeatMs_ = 0;
  bool suppressHeartbeat_ = false;
  std::uint32_t lastHeartbeatTick_ = 0;
  bool disabled_ = false;
  bool holdFinal100_ = false;
};

}  // namespace zantrel

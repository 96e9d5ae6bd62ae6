#pragma once

#include <atomic>
#include <cstdint>

#include "frame/progress_event.h"

namespace zantrel {

/// The sink of a method that runs in the background: keeps the last percentage for whoever asks,
/// and answers the abort that another thread has requested.
class AsyncProgressEvent final : public ProgressEvent {
 public:
  void requestAbort() { abortRequested_.store(true, std::memory_order_relaxed); }
  bool abortRequested() const { return abortRequested_.load(std::memory_order_relaxed); }
  std::uint32_t percentDone() const { return percent_.load(std::memory_order_relaxed); }
  void reset() {
    abortRequested_.store(false, std::memory_order_relaxed);
    percent_.store(0, std::memory_order_relaxed);
  }

  void PercentDone(std::uint32_t percent, bool& abort) override {
    percent_.store(percent, std::memory_order_relaxed);
    abort = abortRequested();
  }
  void AbortCheck(bool& abort) override { abort = abortRequested(); }
  void PercentDone2(std::uint32_t, bool& abort) override { abort = abortRequested(); }

 private:
  std::atomic<bool> abortRequested_{false};
  std::atomic<std::uint32_t> percent_{0};
};

}  // namespace zantrel

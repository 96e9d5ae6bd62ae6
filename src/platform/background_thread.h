#pragma once

#include <functional>
#include <thread>

namespace zantrel {

/// A thread for one piece of work, which must not throw. Its owner tells the work to end before the
/// destructor waits for it.
class BackgroundThread final {
 public:
  BackgroundThread() = default;
  ~BackgroundThread() { join(); }
  BackgroundThread(const BackgroundThread&) = delete;
  BackgroundThread& operator=(const BackgroundThread&) = delete;

  /// False when the system has no thread to give; nothing runs then.
  bool start(std::function<void()> work);
  /// Waits for the end of the work, if there is any.
  void join() noexcept;

 private:
  std::thread thread_;
};

}  // namespace zantrel

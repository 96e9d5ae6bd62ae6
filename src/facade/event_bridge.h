#pragma once
// The bridge from a component's progress callbacks to the event handlers of its public class.

#include <zantrel/types.h>

#include <exception>

#include "frame/progress_event.h"

namespace zantrel::facade {

/// The handler members of a public object; null where its class has no such event.
struct Handlers {
  const std::function<void(Zantrel::PercentDoneEventArgs&)>* percentDone = nullptr;
  const std::function<void(Zantrel::AbortCheckEventArgs&)>* abortCheck = nullptr;
  const std::function<void(Zantrel::ProgressInfoEventArgs&)>* progressInfo = nullptr;
};

/// Raises native callbacks as events. What a handler throws stays here until the method has come
/// back, so that no exception runs through an engine; the method is told to abort instead.
class EventBridge final : public ProgressEvent {
 public:
  explicit EventBridge(const Handlers& handlers) noexcept : handlers_(handlers) {}

  /// Gives the EnableEvents of the object, which is looked at before each event.
  void enableBy(const bool& enableEvents) noexcept { enabled_ = &enableEvents; }
  /// Whether any handler is there to be called.
  bool active() const noexcept;
  /// Throws again what a handler threw.
  void rethrow() const;

  void PercentDone(std::uint32_t percent, bool& abort) override;
  void AbortCheck(bool& abort) override;
  void ProgressInfo(const char* name, const char* value) override;

 private:
  template <class Args>
  void raise(const std::function<void(Args&)>* handler, Args& args);

  Handlers handlers_;
  const bool* enabled_ = nullptr;
  std::exception_ptr thrown_;
};

}  // namespace zantrel::facade

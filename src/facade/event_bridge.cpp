#include "facade/event_bridge.h"

#include "facade/guard.h"

namespace zantrel::facade {

bool EventBridge::active() const noexcept {
  const auto set = [](const auto* handler) { return handler != nullptr && *handler; };
  return *enabled_ &&
         (set(handlers_.percentDone) || set(handlers_.abortCheck) || set(handlers_.progressInfo));
}

void EventBridge::rethrow() const {
  if (thrown_) std::rethrow_exception(thrown_);
}

template <class Args>
void EventBridge::raise(const std::function<void(Args&)>* handler, Args& args) {
  if (thrown_ || handler == nullptr || !*handler || !*enabled_) return;
  thrown_ = thrownBy([&] { (*handler)(args); });
}

void EventBridge::PercentDone(std::uint32_t percent, bool& abort) {
  Zantrel::PercentDoneEventArgs args{percent, false};
  raise(handlers_.percentDone, args);
  abort = args.Abort || thrown_ != nullptr;
}

void EventBridge::AbortCheck(bool& abort) {
  Zantrel::AbortCheckEventArgs args;
  raise(handlers_.abortCheck, args);
  abort = args.Abort || thrown_ != nullptr;
}

void EventBridge::ProgressInfo(const char* name, const char* value) {
  Zantrel::ProgressInfoEventArgs args{name, value};
  raise(handlers_.progressInfo, args);
}

}  // namespace zantrel::facade

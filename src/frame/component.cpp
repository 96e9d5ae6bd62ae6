#include "frame/component.h"

#include <algorithm>
#include <array>

#include "frame/host_environment.h"

namespace zantrel {

bool keepsActivityLog(std::string_view member) noexcept {
  static constexpr std::array<std::string_view, 8> kMembers{
      "Dispose",      "GetMyHashCode",     "LastErrorHtml", "LastErrorText",
      "LastErrorXml", "LastMethodSuccess", "SaveLastError", "Version"};
  return std::find(kMembers.begin(), kMembers.end(), member) != kMembers.end();
}

MethodCall::MethodCall(Component& component, const char* name, ProgressEvent* sink)
    : lock_(component.criticalSection()),
      component_(component),
      keepsLog_(keepsActivityLog(name)),
      sink_(sink) {
  if (keepsLog_) return;
  // A call from inside an event handler of the same object adds a context to the running log.
  component_.startLog();
  ++component_.callDepth_;
  log().enterContext(name, false);
  log().logData("DllDate", buildDate());
}

MethodCall::~MethodCall() {
  finish(false);
  if (keepsLog_) return;
  log().leaveContext();
  --component_.callDepth_;
}

ProgressMonitor& MethodCall::startProgress(std::int64_t total) {
  progress_ = std::make_unique<ProgressMonitor>(sink_, total);
  progress_->setHeartbeatMs(heartbeatMs());
  return *progress_;
}

void MethodCall::finish(bool success) {
  if (finished_) return;
  finished_ = true;
  if (keepsLog_) return;
  const bool succeeded = success_.value_or(success);
  if (succeeded && progress_ != nullptr) progress_->end();
  component_.lastMethodSuccess_ = component_.logResult(succeeded);
}

void Component::reportException(const char* method, std::string_view what) {
  const CritSecLock lock(criticalSection());
  appendException(what);
  CreateExceptionLog(method);
  lastMethodSuccess_ = false;
}

bool Component::refusesInBrowser(const char* method) {
  if (!hostedInBrowser()) return false;
  const CritSecLock lock(criticalSection());
  startLog();
  const LogContext context(log(), method);
  log().logData("DllDate", buildDate());
  log().logError("This method is not allowed to run in a browser for security purposes.");
  lastMethodSuccess_ = false;
  return true;
}

}  // namespace zantrel

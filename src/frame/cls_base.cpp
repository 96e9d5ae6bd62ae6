#include "frame/cls_base.h"

#include "frame/host_environment.h"
#include "frame/live_objects.h"
#include "platform/system_info.h"

namespace zantrel {

ClsBase::ClsBase() = default;

ClsBase::~ClsBase() {
  stamp_ = 0;
}

// The sanitizer would object to the very thing that is asked here.
__attribute__((no_sanitize("vptr"))) bool ClsBase::isValid(const ClsBase* handle) {
  return handle != nullptr && handle->stamp_ == kAlive;
}

void ClsBase::appendException(std::string_view what) {
  constexpr std::uint32_t kMostBytes = 16'384;  // the latest exceptions are the telling ones
  if (exceptionLog_.getSize() + what.size() > kMostBytes) exceptionLog_.clear();
  if (!exceptionLog_.empty()) exceptionLog_.appendChar('\n');
  exceptionLog_.append(what.substr(0, kMostBytes));
}

void ClsBase::CreateExceptionLog(const char* name) {
  constexpr int kExceptionUpdate = 1004;  // revision of this report
  startLog();
  const LogContext context(log_, name);
  log_.logData("DllDate", buildDate());
  log_.logError("Internal exception");
  log_.logDataLong("ExceptionUpdate", kExceptionUpdate);
  for (std::size_t i = 0; i < kLiveObjectKinds; ++i) {
    const auto kind = static_cast<LiveObject>(i);
    const std::int32_t count = liveObjectCount(kind);
    if (count != 0) log_.logDataLong(liveObjectTag(kind), count);
  }
  log_.logData("exceptionLog", exceptionLog_.getString());
}

void ClsBase::logEnvironment() {
  log_.logData("Username", userName().c_str());
  log_.logData("Component", facadeName());
}

bool ClsBase::logResult(bool success) {
  if (success) {
    log_.logInfo("Success.");
  } else {
    log_.logError("Failed.");
  }
  return success;
}

void ClsBase::startLog() {
  if (callDepth_ == 0) log_.clearLog();
}

}  // namespace zantrel

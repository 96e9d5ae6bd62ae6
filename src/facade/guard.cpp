#include "facade/guard.h"

#include "frame/component.h"

namespace zantrel::facade {
namespace {

/// What the exception being handled says of itself.
void describeCurrentException(Component& component, const char* name) {
  try {
    throw;
  } catch (const std::exception& error) {
    component.reportException(name, error.what());
  } catch (...) {
    component.reportException(name, "An exception that does not derive from std::exception.");
  }
}

}  // namespace

void reportException(Component& component, const char* name) noexcept {
  // Without storage even for the report, the failure value alone has to do.
  (void)thrownBy([&] { describeCurrentException(component, name); });
}

void reportRefusedCall(Component& component, const char* name, const char* reason,
                       std::uint64_t numBytes) {
  MethodCall call(component, name, nullptr);
  call.log().logError(reason);
  if (numBytes != 0) call.log().logData64("NumBytes", static_cast<std::int64_t>(numBytes));
  call.finish(false);
}

void reportRefusedValue(Component& component, const char* name, const char* reason) {
  const LogContext context(component.log(), name);
  component.log().logError(reason);
}

}  // namespace zantrel::facade

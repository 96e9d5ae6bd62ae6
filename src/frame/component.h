#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "frame/cls_base.h"
#include "frame/progress_event.h"
#include "frame/progress_monitor.h"
#include "frame/zantrel_crit_sec.h"

namespace zantrel {

class MethodCall;

/// The settings that every component has.
struct CommonSettings {
  bool verboseLogging = false;
  std::uint32_t heartbeatMs = 0;
};

/// A component with the frame in which each of its public methods runs. A method is one body:
///
///   bool ClsCharset::ConvertData(const DataBuffer& in, DataBuffer& out, ProgressEvent* progress) {
///     return call("ConvertData", progress, [&](MethodCall& c) { ... return ok; });
///   }
///
/// The frame takes the component's lock, clears the log, opens a context of the method's name, logs
/// "DllDate", and after the body the result, and closes the context on every way out.
class Component : public ClsBase {
 public:
  CommonSettings& commonSettings() { return common_; }
  const CommonSettings& commonSettings() const { return common_; }

  /// Whether the most recent method succeeded; false before the first. An empty result can be one.
  bool get_LastMethodSuccess() const { return lastMethodSuccess_; }
  void put_LastMethodSuccess(bool success) { lastMethodSuccess_ = success; }
  void get_LastErrorText(XString& out);
  void get_LastErrorXml(XString& out);
  void get_LastErrorHtml(XString& out);
  bool SaveLastError(const XString& path);
  static const char* version() { return "10.2.3"; }
  void get_Version(XString& out) const;

  /// The lock of a component that several threads may use; null for the others. Whoever reads or
  /// writes a property holds it: const CritSecLock lock(component.criticalSection());
  virtual ZantrelCritSec* criticalSection() noexcept { return nullptr; }

  /// What the facade does about an exception that reaches it in the method of this name: notes it,
  /// turns the activity log into the report of it, and makes the method a failed one.
  void reportException(const char* method, std::string_view what);

 protected:
  /// Runs a public method. The result's truth is its success, unless the body has told otherwise by
  /// MethodCall::setSuccess(): false, 0 and null are failures.
  template <class Body>
  auto call(const char* name, ProgressEvent* sink, Body&& body);
  template <class Body>
  auto call(const char* name, Body&& body) {
    return call(name, nullptr, std::forward<Body>(body));
  }

  /// For methods that must not run inside a web browser: logs so and answers true when the process
  /// is one; the method then returns its failure value.
  bool refusesInBrowser(const char* method);

 private:
  friend class MethodCall;

  CommonSettings common_;
  bool lastMethodSuccess_ = false;
};

/// A public method while it runs: what its body needs of the frame.
class MethodCall {
 public:
  MethodCall(Component& component, const char* name, ProgressEvent* sink);
  /// A call that was not finished has failed.
  ~MethodCall();
  MethodCall(const MethodCall&) = delete;
  MethodCall& operator=(const MethodCall&) = delete;

  Logger& log() { return component_.log(); }
  bool verbose() const { return component_.common_.verboseLogging; }
  std::uint32_t heartbeatMs() const { return component_.common_.heartbeatMs; }

  /// Makes the operation's monitor over the caller's sink, paced by the component's heartbeat. It
  /// ends with the method if that succeeds.
  ProgressMonitor& startProgress(std::int64_t total);
  /// The monitor; null before startProgress().
  ProgressMonitor* progress() { return progress_.get(); }

  /// Decides the success of a method whose result does not show it.
  void setSuccess(bool success) { success_ = success; }

  /// Logs the result once; `success` counts unless setSuccess() has decided.
  void finish(bool success);

 private:
  const CritSecLock lock_;
  Component& component_;
  const bool keepsLog_;
  ProgressEvent* const sink_;
  std::unique_ptr<ProgressMonitor> progress_;
  std::optional<bool> success_;
  bool finished_ = false;
};

/// The members that leave the log of the most recent method, and LastMethodSuccess, as they are.
bool keepsActivityLog(std::string_view member) noexcept;

template <class Body>
auto Component::call(const char* name, ProgressEvent* sink, Body&& body) {
  MethodCall frame(*this, name, sink);
  auto result = std::forward<Body>(body)(frame);
  frame.finish(static_cast<bool>(result));
  return result;
}

}  // namespace zantrel

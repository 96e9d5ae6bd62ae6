#pragma once

#include <string_view>

#include "core/ext_ptr_array.h"
#include "core/zantrel_object.h"
#include "frame/log_entry2.h"

namespace zantrel {

/// The tree of an activity log: the open contexts from the root "ZantrelLog" to the current one,
/// which takes new entries. An entry for which storage cannot be had is silently dropped. Knows no
/// locks; see Logger.
class ErrorLog final : public ZantrelObject {
 public:
  ErrorLog();
  ~ErrorLog() override;
  ErrorLog(const ErrorLog&) = delete;
  ErrorLog& operator=(const ErrorLog&) = delete;

  /// Discards everything, open contexts included, and starts a new root.
  void clear();

  void enterContext(const char* name);
  /// Closes the current context; ignored at the root. An empty context disappears from the log when
  /// it was nested at least two levels deep; a method's own stays. The asymmetry is deliberate.
  void leaveContext();

  void addError(std::string_view text);
  void addInfo(std::string_view text);
  void addFragment(std::string_view text);
  void addData(std::string_view tag, std::string_view value);

  /// Null only when there was no storage for it.
  const LogEntry2* root() const { return static_cast<LogEntry2*>(contexts_.elementAt(0)); }

 private:
  LogEntry2* current() const { return static_cast<LogEntry2*>(contexts_.lastElement()); }
  void discardTree();
  template <class Set>
  void add(Set set);

  ExtPtrArray contexts_;  // owns its first element, the root; the others belong to their parents
};

}  // namespace zantrel

#include "frame/error_log.h"

#include <memory>
#include <new>
#include <utility>

namespace zantrel {

ErrorLog::ErrorLog() {
  clear();
}

ErrorLog::~ErrorLog() {
  discardTree();
}

void ErrorLog::discardTree() {
  delete contexts_.elementAt(0);
  contexts_.removeAll();
}

void ErrorLog::clear() {
  discardTree();
  std::unique_ptr<LogEntry2> root(new (std::nothrow) LogEntry2);
  if (root && root->setContext("ZantrelLog") && contexts_.appendPtr(root.get())) root.release();
}

template <class Set>
void ErrorLog::add(Set set) {
  LogEntry2* const parent = current();
  if (parent == nullptr) return;
  std::unique_ptr<LogEntry2> entry(new (std::nothrow) LogEntry2);
  if (entry && set(*entry)) parent->appendChild(std::move(entry));
}

void ErrorLog::enterContext(const char* name) {
  LogEntry2* const parent = current();
  if (parent == nullptr) return;
  std::unique_ptr<LogEntry2> entry(new (std::nothrow) LogEntry2);
  LogEntry2* const context = entry.get();
  // Where the new context cannot be had, its parent stands in for it, so that the leaving of it
  // stays balanced.
  const bool made = entry && entry->setContext(name) && parent->appendChild(std::move(entry));
  contexts_.appendPtr(made ? context : parent);
}

void ErrorLog::leaveContext() {
  if (contexts_.getSize() > 1) contexts_.pop();
  if (contexts_.getSize() < 2) return;
  const LogEntry2* const last = current()->lastChild();
  if (last != nullptr && last->kind() == LogEntry2::Kind::Context && last->childCount() == 0)
    current()->removeLastChild();
}

void ErrorLog::addError(std::string_view text) {
  add([text](LogEntry2& entry) { return entry.setError(text); });
}

void ErrorLog::addInfo(std::string_view text) {
  add([text](LogEntry2& entry) { return entry.setInfo(text); });
}

void ErrorLog::addFragment(std::string_view text) {
  add([text](LogEntry2& entry) { return entry.setFragment(text); });
}

void ErrorLog::addData(std::string_view tag, std::string_view value) {
  add([tag, value](LogEntry2& entry) { return entry.setData(tag, value); });
}

}  // namespace zantrel

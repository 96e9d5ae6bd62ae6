#include "frame/log_entry2.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zantrel {

LogEntry2::~LogEntry2() {
  deleteChildren();
}

// Lifts the grandchildren into this list before a child goes, so that deep nesting does not become
// deep recursion. Where the list cannot grow, the child deletes its own.
void LogEntry2::deleteChildren() {
  if (!children_) return;
  while (ZantrelObject* const last = children_->pop()) {
    const std::unique_ptr<LogEntry2> entry(static_cast<LogEntry2*>(last));
    if (!entry->children_) continue;
    while (ZantrelObject* const grandchild = entry->children_->pop()) {
      if (!children_->appendPtr(grandchild)) {
        entry->children_->appendPtr(grandchild);  // its slot is still there
        break;
      }
    }
  }
  children_.reset();
}

bool LogEntry2::store(const std::string_view* tag, const std::string_view* text) {
  bytes_.reset();
  tagSize_ = textSize_ = kAbsent;
  const std::size_t tagSize = tag != nullptr ? tag->size() : 0;
  const std::size_t textSize = text != nullptr ? text->size() : 0;
  if (tagSize >= kAbsent || textSize >= kAbsent) return false;
  if (tagSize + textSize > 0) {
    bytes_.reset(static_cast<char*>(storage::allocate(tagSize + textSize)));
    if (!bytes_) return false;
    if (tagSize > 0) std::memcpy(bytes_.get(), tag->data(), tagSize);
    if (textSize > 0) std::memcpy(bytes_.get() + tagSize, text->data(), textSize);
  }
  if (tag != nullptr) tagSize_ = static_cast<std::uint32_t>(tagSize);
  if (text != nullptr) textSize_ = static_cast<std::uint32_t>(textSize);
  return true;
}

bool LogEntry2::setContext(const char* name) {
  deleteChildren();
  kind_ = Kind::Context;
  children_.reset(new (std::nothrow) ExtPtrArray);
  if (!children_) return false;
  if (name == nullptr) return store(nullptr, nullptr);
  const std::string_view tag = name;
  return store(&tag, nullptr);
}

bool LogEntry2::setText(Kind kind, std::string_view text) {
  kind_ = kind;
  return store(nullptr, &text);
}

bool LogEntry2::setData(std::string_view tag, std::string_view text) {
  kind_ = Kind::Data;
  if (!store(&tag, &text)) return false;
  std::replace(bytes_.get(), bytes_.get() + tag.size(), ' ', '_');
  return true;
}

std::string_view LogEntry2::text() const {
  if (!hasText()) return {};
  return {bytes_.get() + (hasTag() ? tagSize_ : 0), textSize_};
}

const LogEntry2& LogEntry2::child(std::int32_t i) const {
  return *static_cast<const LogEntry2*>(children_->elementAt(i));
}

LogEntry2* LogEntry2::lastChild() const {
  return children_ ? static_cast<LogEntry2*>(children_->lastElement()) : nullptr;
}

bool LogEntry2::appendChild(std::unique_ptr<LogEntry2> entry) {
  if (!children_ || !children_->appendPtr(entry.get())) return false;
  entry.release();
  return true;
}

void LogEntry2::removeLastChild() {
  if (children_) delete children_->pop();
}

}  // namespace zantrel

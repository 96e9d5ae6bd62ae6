#include "frame/logger.h"

#include <charconv>
#include <string_view>

#include "core/ascii_text.h"
#include "core/string_buffer.h"
#include "frame/log_render.h"
#include "platform/file.h"

namespace zantrel {

namespace {

/// A number as text, in a place of its own.
class NumberText {
 public:
  template <class Number>
  explicit NumberText(Number value, int base = 10, std::string_view prefix = {}) {
    char* const digits = text_ + prefix.copy(text_, prefix.size());
    end_ = std::to_chars(digits, text_ + sizeof text_, value, base).ptr;
  }
  std::string_view view() const { return {text_, static_cast<std::size_t>(end_ - text_)}; }

 private:
  char text_[24];
  char* end_;
};

bool addData(ErrorLog& tree, const char* tag, std::string_view value) {
  const std::string_view name = trimmed(tag != nullptr ? tag : "");
  if (name.empty()) return false;
  tree.addData(name, value);
  return true;
}

bool rendered(const ErrorLog& tree, void (*render)(const LogEntry2&, StringBuffer&),
              StringBuffer& out) {
  out.clear();
  if (const LogEntry2* const root = tree.root()) render(*root, out);
  return true;
}

}  // namespace

bool Logger::getXml(StringBuffer& out) {
  const CritSecLock lock(section_);
  return rendered(tree_, renderLogXml, out);
}

bool Logger::getHtml(StringBuffer& out) {
  const CritSecLock lock(section_);
  return rendered(tree_, renderLogHtml, out);
}

bool Logger::getText(StringBuffer& out) {
  const CritSecLock lock(section_);
  return rendered(tree_, renderLogText, out);
}

bool Logger::logError(const char* text) {
  const CritSecLock lock(section_);
  if (text != nullptr) tree_.addError(text);
  return true;
}

bool Logger::logInfo(const char* text) {
  const CritSecLock lock(section_);
  if (text != nullptr) tree_.addInfo(text);
  return true;
}

bool Logger::logXml(const char* text) {
  const CritSecLock lock(section_);
  if (text != nullptr) tree_.addFragment(text);
  return true;
}

bool Logger::clearLog() {
  const CritSecLock lock(section_);
  tree_.clear();
  return true;
}

bool Logger::enterContext(const char* name, bool /*flag*/) {
  const CritSecLock lock(section_);
  tree_.enterContext(name);
  return true;
}

bool Logger::leaveContext() {
  const CritSecLock lock(section_);
  tree_.leaveContext();
  return true;
}

bool Logger::logData(const char* tag, const char* value) {
  const CritSecLock lock(section_);
  return addData(tree_, tag, value != nullptr ? value : "(NULL)");
}

bool Logger::logDataLong(const char* tag, std::int32_t value) {
  const CritSecLock lock(section_);
  return addData(tree_, tag, NumberText(value).view());
}

bool Logger::logData64(const char* tag, std::int64_t value) {
  const CritSecLock lock(section_);
  return addData(tree_, tag, NumberText(value).view());
}

bool Logger::logHex(const char* tag, std::uint32_t value) {
  const CritSecLock lock(section_);
  return addData(tree_, tag, NumberText(value, 16, "0x").view());
}

bool Logger::logTickCount(const char* tag) {
  const CritSecLock lock(section_);
  return addData(tree_, tag, NumberText(tickCountMs(), 16).view());
}

bool Logger::saveXml(const char* path) {
  const CritSecLock lock(section_);
  StringBuffer xml;
  OutputFile file;
  return path != nullptr && rendered(tree_, renderLogXml, xml) && file.open(path) == 0 &&
         file.write(xml.getString(), xml.getSize()) == 0 && file.commit() == 0;
}

}  // namespace zantrel

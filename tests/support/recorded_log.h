#pragma once
// A log that keeps what engines write to it, one entry a line: "error: text" or "tag: value".

#include <string>

#include "core/log_base.h"

namespace zantrel::test {

class RecordedLog final : public LogBase {
 public:
  const std::string& text() const { return text_; }
  bool has(const std::string& part) const { return text_.find(part) != std::string::npos; }

  bool getXml(StringBuffer&) override { return false; }
  bool getHtml(StringBuffer&) override { return false; }
  bool getText(StringBuffer&) override { return false; }
  bool logError(const char* text) override { return add("error", text); }
  bool logInfo(const char* text) override { return add("info", text); }
  bool logXml(const char* text) override { return add("xml", text); }
  bool clearLog() override {
    text_.clear();
    return true;
  }
  bool enterContext(const char* name, bool) override { return add("enter", name); }
  bool leaveContext() override { return add("leave", ""); }
  bool logData(const char* tag, const char* value) override { return add(tag, value); }
  bool logDataLong(const char* tag, std::int32_t value) override {
    return add(tag, std::to_string(value));
  }
  bool logData64(const char* tag, std::int64_t value) override {
    return add(tag, std::to_string(value));
  }
  bool logHex(const char* tag, std::uint32_t value) override {
    return add(tag, std::to_string(value));
  }
  bool logTickCount(const char* tag) override { return add(tag, "ticks"); }
  bool saveXml(const char*) override { return false; }

 private:
  bool add(const std::string& tag, const std::string& value) {
    text_ += tag + ": " + value + "\n";
    return true;
  }

  std::string text_;
};

}  // namespace zantrel::test

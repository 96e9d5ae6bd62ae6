#pragma once

#include "core/log_base.h"

namespace zantrel {

/// A log that discards everything: for callers that want none. Every operation succeeds.
class LogNull final : public LogBase {
 public:
  bool getXml(StringBuffer&) override { return true; }
  bool getHtml(StringBuffer&) override { return true; }
  bool getText(StringBuffer&) override { return true; }
  bool logError(const char*) override { return true; }
  bool logInfo(const char*) override { return true; }
  bool logXml(const char*) override { return true; }
  bool clearLog() override { return true; }
  bool enterContext(const char*, bool) override { return true; }
  bool leaveContext() override { return true; }
  bool logData(const char*, const char*) override { return true; }
  bool logDataLong(const char*, std::int32_t) override { return true; }
  bool logData64(const char*, std::int64_t) override { return true; }
  bool logHex(const char*, std::uint32_t) override { return true; }
  void logWindowsError(std::uint32_t) override {}
  bool logTickCount(const char*) override { return true; }
  bool saveXml(const char*) override { return true; }
};

}  // namespace zantrel

#pragma once
// The activity-log interface that every engine writes to. `frame` implements it with Logger;
// LogNull (log_null.h) discards everything. It is the library's only error channel.

#include <cstdint>

#include "core/zantrel_object.h"
#include "platform/clock.h"

namespace zantrel {

class StringBuffer;
class XString;

/// Texts are UTF-8 and NUL-terminated. Every operation returns true unless it says otherwise.
/// Tags are trimmed and their blanks become "_"; an entry whose tag is then empty is not logged and
/// the operation returns false.
class LogBase : public ZantrelObject {
 public:
  virtual bool getXml(StringBuffer& out) = 0;
  virtual bool getHtml(StringBuffer& out) = 0;
  virtual bool getText(StringBuffer& out) = 0;
  virtual bool logError(const char* text) = 0;
  virtual bool logInfo(const char* text) = 0;
  virtual bool logXml(const char* text) = 0;
  virtual bool clearLog() = 0;
  virtual bool enterContext(const char* name, bool flag) = 0;
  virtual bool leaveContext() = 0;
  virtual bool logData(const char* tag, const char* value) = 0;
  virtual bool logDataLong(const char* tag, std::int32_t value) = 0;
  virtual bool logData64(const char* tag, std::int64_t value) = 0;
  virtual bool logHex(const char* tag, std::uint32_t value) = 0;
  /// Logs "WindowsError" with the system's message for a non-zero operating-system error number.
  virtual void logWindowsError(std::uint32_t errorNumber);
  virtual bool logTickCount(const char* tag) = 0;
  /// Writes the XML rendering to a file; false if that failed.
  virtual bool saveXml(const char* path) = 0;

  bool logDataStr(const char* tag, const XString& value);
  bool logErrorStr(const XString& text);
  bool logDataBytes(const char* tag, const void* bytes, std::uint32_t count);
  bool logBinary(const char* tag, const void* bytes, std::uint32_t count);
  bool logTimestamp(int n);
  bool logElapsed(const char* tag, std::uint32_t startTick);
  bool logSystemTime(const char* tag, const SystemTime& time);
};

/// Keeps a log context open for its own lifetime, so that an early return cannot unbalance the log.
class LogContext {
 public:
  LogContext(LogBase& log, const char* name) : log_(log) { log_.enterContext(name, false); }
  ~LogContext() { log_.leaveContext(); }
  LogContext(const LogContext&) = delete;
  LogContext& operator=(const LogContext&) = delete;

 private:
  LogBase& log_;
};

}  // namespace zantrel

#include "core/log_base.h"

#include <cstdio>

#include "core/date_parser.h"
#include "core/encode/quoted_printable.h"
#include "core/string_buffer.h"
#include "core/xstring.h"
#include "platform/error_text.h"

namespace zantrel {

namespace {

using ShortText = char[48];

}  // namespace

void LogBase::logWindowsError(std::uint32_t errorNumber) {
  if (errorNumber != 0) logData("WindowsError", systemErrorText(errorNumber).c_str());
}

bool LogBase::logDataStr(const char* tag, const XString& value) {
  return logData(tag, value.getUtf8());
}

bool LogBase::logErrorStr(const XString& text) {
  return logError(text.getUtf8());
}

bool LogBase::logDataBytes(const char* tag, const void* bytes, std::uint32_t count) {
  StringBuffer text;
  if (bytes != nullptr) text.append(bytes, count);
  return logData(tag, text.getString());
}

bool LogBase::logBinary(const char* tag, const void* bytes, std::uint32_t count) {
  if (bytes == nullptr || count == 0) return logError("No binary data to log");
  StringBuffer text;
  quotedPrintableEncodeOneLine({static_cast<const std::uint8_t*>(bytes), count}, text);
  return logData(tag, text.getString());
}

bool LogBase::logTimestamp(int n) {
  const SystemTime now = systemClock().utcTime();
  ShortText tag;
  ShortText value;
  std::snprintf(tag, sizeof tag, "Timestamp-%d", n);
  std::snprintf(value, sizeof value, "%d:%02d:%02d.%03d", now.hour, now.minute, now.second,
                now.milliseconds);
  return logData(tag, value);
}

bool LogBase::logElapsed(const char* tag, std::uint32_t startTick) {
  // A tick count that has wrapped or a stale start would give a meaningless figure.
  constexpr std::uint32_t kImplausibleMs = 900'000'000;
  const std::uint32_t now = tickCountMs();
  if (now < startTick || now - startTick >= kImplausibleMs) return true;
  ShortText value;
  std::snprintf(value, sizeof value, "Elapsed time: %d millisec",
                static_cast<int>(now - startTick));
  return logData(tag, value);
}

bool LogBase::logSystemTime(const char* tag, const SystemTime& time) {
  const LogContext context(*this, tag);
  logDataLong("year", time.year);
  logDataLong("month", time.month);
  logDataLong("day", time.day);
  logDataLong("hour", time.hour);
  logDataLong("minutes", time.minute);
  logDataLong("seconds", time.second);
  StringBuffer text;
  DateParser().gmtDate(time, text);
  return logData("RFC822_DateTime", text.getString());
}

}  // namespace zantrel

#include "core/log_base.h"

#include <cstdio>

#include "core/string_buffer.h"
#include "platform/error_text.h"

namespace zantrel {

namespace {

using ShortText = char[48];

}  // namespace

void LogBase::logWindowsError(std::uint32_t errorNumber) {
  if (errorNumber != 0) logData("WindowsError", systemErrorText(errorNumber).c_str());
}

bool LogBase::logDataBytes(const char* tag, const void* bytes, std::uint32_t count) {
  StringBuffer text;
  if (bytes != nullptr) text.append(bytes, count);
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

}  // namespace zantrel

#include "platform/local_time.h"

#include <windows.h>

namespace zantrel {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;

}  // namespace

std::int64_t secondsFromLocal(const SystemTime& local) {
  const SYSTEMTIME from{local.year, local.month,  local.dayOfWeek, local.day,
                        local.hour, local.minute, local.second,    0};
  SYSTEMTIME utc{};
  FILETIME file{};
  if (!TzSpecificLocalTimeToSystemTime(nullptr, &from, &utc) || !SystemTimeToFileTime(&utc, &file))
    return 0;
  const std::uint64_t ticks = (std::uint64_t{file.dwHighDateTime} << 32) | file.dwLowDateTime;
  return static_cast<std::int64_t>(ticks) / kTicksPerSecond - kSecondsFrom1601To1970;
}

SystemTime localFromSeconds(std::int64_t seconds) {
  const auto ticks =
      static_cast<std::uint64_t>((seconds + kSecondsFrom1601To1970) * kTicksPerSecond);
  const FILETIME file{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME utc{};
  SYSTEMTIME to{};
  if (!FileTimeToSystemTime(&file, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &to))
    return {};
  return {to.wYear, to.wMonth, to.wDayOfWeek, to.wDay, to.wHour, to.wMinute, to.wSecond, 0};
}

}  // namespace zantrel

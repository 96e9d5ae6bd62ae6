#include "platform/clock.h"

#include <windows.h>

namespace zantrel {

namespace {

SystemTime fromSystemTime(const SYSTEMTIME& from) {
  return {from.wYear, from.wMonth,  from.wDayOfWeek, from.wDay,
          from.wHour, from.wMinute, from.wSecond,    from.wMilliseconds};
}

class MachineClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override { return GetTickCount(); }

  SystemTime utcTime() const override {
    SYSTEMTIME value;
    GetSystemTime(&value);
    return fromSystemTime(value);
  }

  SystemTime localTime() const override {
    SYSTEMTIME value;
    GetLocalTime(&value);
    return fromSystemTime(value);
  }

  int utcOffsetMinutes() const override {
    TIME_ZONE_INFORMATION zone{};
    const DWORD kind = GetTimeZoneInformation(&zone);
    LONG bias = zone.Bias;
    if (kind == TIME_ZONE_ID_DAYLIGHT) bias += zone.DaylightBias;
    if (kind == TIME_ZONE_ID_STANDARD) bias += zone.StandardBias;
    return -static_cast<int>(bias);
  }
};

}  // namespace

const Clock& machineClock() noexcept {
  static const MachineClock clock;
  return clock;
}

}  // namespace zantrel

#include "platform/clock.h"

#include <time.h>

#include "platform/posix/system_time.h"

namespace zantrel {

namespace {

timespec now(clockid_t clock) {
  timespec value{};
  clock_gettime(clock, &value);
  return value;
}

class MachineClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override {
    const timespec value = now(CLOCK_MONOTONIC);
    const auto seconds = static_cast<std::uint64_t>(value.tv_sec);
    const auto nanoseconds = static_cast<std::uint64_t>(value.tv_nsec);
    return static_cast<std::uint32_t>(seconds * 1000 + nanoseconds / 1'000'000);
  }

  SystemTime utcTime() const override {
    const timespec value = now(CLOCK_REALTIME);
    tm fields{};
    gmtime_r(&value.tv_sec, &fields);
    return fromTm(fields, value.tv_nsec);
  }

  SystemTime localTime() const override {
    const timespec value = now(CLOCK_REALTIME);
    tm fields{};
    localtime_r(&value.tv_sec, &fields);
    return fromTm(fields, value.tv_nsec);
  }

  int utcOffsetMinutes() const override {
    const timespec value = now(CLOCK_REALTIME);
    tm fields{};
    localtime_r(&value.tv_sec, &fields);
    return static_cast<int>(fields.tm_gmtoff / 60);
  }
};

}  // namespace

const Clock& machineClock() noexcept {
  static const MachineClock clock;
  return clock;
}

}  // namespace zantrel

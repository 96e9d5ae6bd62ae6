#pragma once
// Wall clock, tick count and time zone of the machine. Tests replace the clock instead of sleeping.

#include <cstdint>

namespace zantrel {

/// Calendar date and time. Fields as in a Win32 SYSTEMTIME: month 1-12, dayOfWeek 0 = Sunday.
struct SystemTime {
  std::uint16_t year = 0;
  std::uint16_t month = 0;
  std::uint16_t dayOfWeek = 0;
  std::uint16_t day = 0;
  std::uint16_t hour = 0;
  std::uint16_t minute = 0;
  std::uint16_t second = 0;
  std::uint16_t milliseconds = 0;

  friend bool operator==(const SystemTime&, const SystemTime&) = default;
};

/// Source of time. The process has one, which ScopedClock replaces.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Milliseconds since an arbitrary start; wraps after 2^32, so compare differences only.
  virtual std::uint32_t tickCountMs() const = 0;
  virtual SystemTime utcTime() const = 0;
  virtual SystemTime localTime() const = 0;
  /// Minutes that local time is ahead of UTC now, daylight saving time included (east positive).
  virtual int utcOffsetMinutes() const = 0;
};

/// The machine's own clock.
const Clock& machineClock() noexcept;

/// The clock in force: the machine's unless a ScopedClock stands.
const Clock& systemClock() noexcept;

inline std::uint32_t tickCountMs() {
  return systemClock().tickCountMs();
}

/// Replaces the process's clock for its own lifetime; for tests. Must not nest across threads.
class ScopedClock {
 public:
  explicit ScopedClock(const Clock& clock) noexcept;
  ~ScopedClock();
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;

 private:
  const Clock* previous_;
};

}  // namespace zantrel

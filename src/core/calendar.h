#pragma once
// Arithmetic of the proleptic Gregorian calendar.

#include <cstdint>

#include "platform/clock.h"

namespace zantrel {

/// Days from 1 January 1970 to a date; negative before it. The month is 1..12.
constexpr std::int64_t daysFromDate(std::int64_t year, int month, int day) noexcept {
  // Years counted from March keep the leap day last (Howard Hinnant, "chrono-compatible low-level
  // date algorithms").
  const std::int64_t y = month <= 2 ? year - 1 : year;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yearOfEra = y - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

/// 0 = Sunday.
constexpr int weekdayFromDays(std::int64_t days) noexcept {
  return static_cast<int>(((days + 4) % 7 + 7) % 7);
}

constexpr bool isLeapYear(std::int64_t year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int daysInMonth(std::int64_t year, int month) noexcept {
  if (month == 2) return isLeapYear(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// Sets year, month, day and weekday; the time of day stays. The year must be within 0..65535.
constexpr void setDateFromDays(std::int64_t days, SystemTime& time) noexcept {
  const std::int64_t z = days + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t dayOfEra = z - era * 146097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t m = (5 * dayOfYear + 2) / 153;
  const std::int64_t month = m < 10 ? m + 3 : m - 9;
  time.year = static_cast<std::uint16_t>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
  time.month = static_cast<std::uint16_t>(month);
  time.day = static_cast<std::uint16_t>(dayOfYear - (153 * m + 2) / 5 + 1);
  time.dayOfWeek = static_cast<std::uint16_t>(weekdayFromDays(days));
}

}  // namespace zantrel

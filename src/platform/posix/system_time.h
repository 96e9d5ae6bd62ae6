#pragma once

#include <time.h>

#include <cstdint>

#include "platform/clock.h"

namespace zantrel {

inline SystemTime fromTm(const tm& fields, long nanoseconds) {
  SystemTime time;
  time.year = static_cast<std::uint16_t>(fields.tm_year + 1900);
  time.month = static_cast<std::uint16_t>(fields.tm_mon + 1);
  time.dayOfWeek = static_cast<std::uint16_t>(fields.tm_wday);
  time.day = static_cast<std::uint16_t>(fields.tm_mday);
  time.hour = static_cast<std::uint16_t>(fields.tm_hour);
  time.minute = static_cast<std::uint16_t>(fields.tm_min);
  time.second = static_cast<std::uint16_t>(fields.tm_sec);
  time.milliseconds = static_cast<std::uint16_t>(nanoseconds / 1'000'000);
  return time;
}

}  // namespace zantrel

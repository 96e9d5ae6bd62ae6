#include "platform/local_time.h"

#include <time.h>

#include "platform/posix/system_time.h"

namespace zantrel {

std::int64_t secondsFromLocal(const SystemTime& local) {
  tm fields{};
  fields.tm_year = local.year - 1900;
  fields.tm_mon = local.month - 1;
  fields.tm_mday = local.day;
  fields.tm_hour = local.hour;
  fields.tm_min = local.minute;
  fields.tm_sec = local.second;
  fields.tm_isdst = -1;  // find out
  return mktime(&fields);
}

SystemTime localFromSeconds(std::int64_t seconds) {
  const auto value = static_cast<time_t>(seconds);
  tm fields{};
  if (localtime_r(&value, &fields) == nullptr) return {};
  return fromTm(fields, 0);
}

}  // namespace zantrel

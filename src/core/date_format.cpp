// Writing of dates: a strftime() of our own, so that names are English whatever the locale.

#include <array>
#include <charconv>
#include <string_view>

#include "core/calendar.h"
#include "core/date_parser.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

constexpr std::string_view kEmailDate = "%a, %d %b %Y %H:%M:%S ";
constexpr std::string_view kGmtDate = "%a, %d %b %Y %H:%M:%S +0000";
constexpr std::string_view kPlainDate = "%a %b %d %Y %H:%M:%S ";
constexpr std::string_view kIso8601 = "%Y-%m-%dT%H:%M:%S";

std::string_view weekday(const SystemTime& time) noexcept {
  return time.dayOfWeek < kWeekdays.size() ? kWeekdays[time.dayOfWeek] : "?";
}

std::string_view month(const SystemTime& time) noexcept {
  const std::size_t index = time.month - std::size_t{1};
  return index < kMonths.size() ? kMonths[index] : "?";
}

void padded(std::int64_t value, std::size_t width, char pad, StringBuffer& out) {
  char digits[24];
  const auto size =
      static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits);
  for (std::size_t i = size; i < width; ++i) out.appendChar(pad);
  out.append(digits, size);
}

int dayOfYear(const SystemTime& time) noexcept {
  return static_cast<int>(daysFromDate(time.year, time.month, time.day) -
                          daysFromDate(time.year, 1, 1));
}

/// Weeks of a year whose first begins with its first Sunday (0) or Monday (1).
int weekOfYear(const SystemTime& time, int firstDay) noexcept {
  const int sinceFirstDay = (time.dayOfWeek + 7 - firstDay) % 7;
  return (dayOfYear(time) + 7 - sinceFirstDay) / 7;
}

/// What a conversion stands for, when it is short for others.
std::string_view longForm(char conversion) noexcept {
  switch (conversion) {
    case 'c':
      return "%a %b %e %H:%M:%S %Y";
    case 'x':
    case 'D':
      return "%m/%d/%y";
    case 'X':
    case 'T':
      return "%H:%M:%S";
    case 'F':
      return "%Y-%m-%d";
    case 'R':
      return "%H:%M";
    case 'r':
      return "%I:%M:%S %p";
    default:
      return {};
  }
}

void number(char conversion, const SystemTime& time, StringBuffer& out) {
  switch (conversion) {
    case 'Y':
      return padded(time.year, 1, '0', out);
    case 'C':
      return padded(time.year / 100, 2, '0', out);
    case 'y':
      return padded(time.year % 100, 2, '0', out);
    case 'm':
      return padded(time.month, 2, '0', out);
    case 'd':
      return padded(time.day, 2, '0', out);
    case 'e':
      return padded(time.day, 2, ' ', out);
    case 'H':
      return padded(time.hour, 2, '0', out);
    case 'I':
      return padded((time.hour + 11) % 12 + 1, 2, '0', out);
    case 'M':
      return padded(time.minute, 2, '0', out);
    case 'S':
      return padded(time.second, 2, '0', out);
    case 'j':
      return padded(dayOfYear(time) + 1, 3, '0', out);
    case 'u':
      return padded((time.dayOfWeek + 6) % 7 + 1, 1, '0', out);
    case 'w':
      return padded(time.dayOfWeek, 1, '0', out);
    case 'U':
      return padded(weekOfYear(time, 0), 2, '0', out);
    default:
      return padded(weekOfYear(time, 1), 2, '0', out);  // 'W'
  }
}

/// Hours and minutes with a sign, "-0330" or "-03:30".
void zone(int minutesEast, std::string_view separator, StringBuffer& out) {
  const int minutes = minutesEast < 0 ? -minutesEast : minutesEast;
  out.appendChar(minutesEast < 0 ? '-' : '+');
  padded(minutes / 60, 2, '0', out);
  out.append(separator);
  padded(minutes % 60, 2, '0', out);
}

}  // namespace

void DateParser::format(std::string_view layout, const SystemTime& time, StringBuffer& out) const {
  for (std::size_t i = 0; i < layout.size(); ++i) {
    if (layout[i] != '%' || i + 1 == layout.size()) {
      out.appendChar(layout[i]);
      continue;
    }
    const char conversion = layout[++i];
    switch (conversion) {
      case 'a':
        out.append(weekday(time).substr(0, 3));
        break;
      case 'A':
        out.append(weekday(time));
        break;
      case 'b':
      case 'h':
        out.append(month(time).substr(0, 3));
        break;
      case 'B':
        out.append(month(time));
        break;
      case 'p':
        out.append(time.hour < 12 ? "AM" : "PM");
        break;
      case 'n':
        out.appendChar('\n');
        break;
      case 't':
        out.appendChar('\t');
        break;
      case '%':
        out.appendChar('%');
        break;
      default:
        if (const std::string_view meaning = longForm(conversion); !meaning.empty()) {
          format(meaning, time, out);  // a long form holds no further long form
        } else if (std::string_view("YCymdeHIMSjuwUW").find(conversion) != std::string_view::npos) {
          number(conversion, time, out);
        } else {
          out.appendChar('%');
          out.appendChar(conversion);
        }
    }
  }
}

void DateParser::gmtDate(const SystemTime& utc, StringBuffer& out) const {
  format(kGmtDate, utc, out);
}

void DateParser::currentGmtDate(StringBuffer& out) const {
  gmtDate(systemClock().utcTime(), out);
}

void DateParser::currentEmailDate(StringBuffer& out) const {
  format(kEmailDate, systemClock().localTime(), out);
  zone(systemClock().utcOffsetMinutes(), "", out);
}

void DateParser::currentPlainDate(StringBuffer& out) const {
  format(kPlainDate, systemClock().localTime(), out);
  zone(systemClock().utcOffsetMinutes(), "", out);
}

void DateParser::currentIso8601(StringBuffer& out) const {
  format(kIso8601, systemClock().localTime(), out);
  zone(systemClock().utcOffsetMinutes(), ":", out);
}

}  // namespace zantrel

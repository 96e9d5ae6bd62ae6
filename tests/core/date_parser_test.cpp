#include "core/date_parser.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <tuple>
#include <utility>

#include "core/calendar.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

class FixedClock final : public Clock {
 public:
  explicit FixedClock(int offsetMinutes) : offset_(offsetMinutes) {}
  std::uint32_t tickCountMs() const override { return 0; }
  SystemTime utcTime() const override { return {2008, 6, 2, 3, 18, 5, 30, 7}; }
  SystemTime localTime() const override { return {2008, 6, 2, 3, 11, 5, 30, 7}; }
  int utcOffsetMinutes() const override { return offset_; }

 private:
  int offset_;
};

/// A date as "2008-06-03T18:05:30 w2", or "refused".
std::string parse(std::string_view text) {
  SystemTime time;
  if (!DateParser().parseDate(text, time)) return "refused";
  StringBuffer out;
  DateParser().format("%Y-%m-%dT%H:%M:%S w%w", time, out);
  return out.getString();
}

TEST(DateParserTest, ReadsDatesAsUtc) {
  const std::pair<const char*, const char*> cases[] = {
      {"Tue, 3 Jun 2008 11:05:30 -0700", "2008-06-03T18:05:30 w2"},
      {"3 Jun 08 11:05", "2008-06-03T11:05:00 w2"},
      {"3 Jun 97 11:05 GMT", "1997-06-03T11:05:00 w2"},
      {"3 Jun 103 11:05", "2003-06-03T11:05:00 w2"},
      {"31 Dec 2007 23:30:00 -0100", "2008-01-01T00:30:00 w2"},
      {"1 Jan 2008 00:30:00 +0100", "2007-12-31T23:30:00 w1"},
      {"28 Feb 2008 23:00 -0200", "2008-02-29T01:00:00 w5"},
      {"Mon, 3 Jun 2008 11:05", "2008-06-03T11:05:00 w1"},        // a wrong weekday is believed
      {"Mon, 3 Jun 2008 23:05 -0200", "2008-06-04T01:05:00 w3"},  // unless the day moved
      {"3 Okt 2008 1:2:3 pst", "2008-10-03T09:02:03 w5"},
      {"3 Dezember 2008 1:2 a", "2008-12-03T02:02:00 w3"},
      {"3 jun 2008 10:00 -7", "2008-06-03T17:00:00 w2"},
      {"3 jun 2008 10:00 +5:30", "2008-06-03T04:30:00 w2"},
      {"30 Jun 2012 18:59:60 -0500", "2012-07-01T00:00:00 w0"},
      {"2008-06-03T11:05:30.25-07:00", "2008-06-03T18:05:30 w2"},
      {"2008-06-03T11:05Z", "2008-06-03T11:05:00 w2"},
      {"2008-06-03t23:05:00+0530", "2008-06-03T17:35:00 w2"},
      {"3-Jun-2008 11:05", "refused"},
      {"Tue, 3 Jun 2008", "refused"},
      {"30 Feb 2008 11:05", "refused"},
      {"3 Jun 2008 25:05", "refused"},
      {"3 Jun 99999999999999 11:05", "refused"},
      {"2008-13-03T11:05", "refused"},
      {"2008-06-03T", "refused"},
      {"", "refused"},
  };
  for (const auto& [text, utc] : cases) EXPECT_EQ(parse(text), utc) << text;
}

TEST(DateParserTest, LooksAtTheFirst199CharactersOnly) {
  const std::string date = "3 Jun 2008 11:05";
  EXPECT_NE(parse(std::string(199 - date.size(), ' ') + date), "refused");
  EXPECT_EQ(parse(std::string(196, ' ') + date), "refused");
}

TEST(DateParserTest, WritesTheCurrentTimeInFourLayouts) {
  const FixedClock clock(-7 * 60);
  const ScopedClock scoped(clock);
  const DateParser dates;
  StringBuffer out;
  dates.currentEmailDate(out);
  out.append("|");
  dates.currentGmtDate(out);
  out.append("|");
  dates.currentPlainDate(out);
  out.append("|");
  dates.currentIso8601(out);
  EXPECT_STREQ(out.getString(),
               "Tue, 03 Jun 2008 11:05:30 -0700|Tue, 03 Jun 2008 18:05:30 +0000|"
               "Tue Jun 03 2008 11:05:30 -0700|2008-06-03T11:05:30-07:00");
}

TEST(DateParserTest, WritesZonesOfHalfHoursWithTheirSign) {
  for (const auto& [minutes, zone] : {std::pair(-30, "-00:30"), std::pair(345, "+05:45")}) {
    const FixedClock clock(minutes);
    const ScopedClock scoped(clock);
    StringBuffer out;
    DateParser().currentIso8601(out);
    EXPECT_EQ(out.view().substr(19), zone);
  }
}

#ifndef _WIN32  // whose C library knows half of these conversions
TEST(DateParserTest, FormatsAsTheCLibraryDoes) {
  const char* const layout =
      "%a %A %b %B %c %C %d %D %e %F %h %H %I %j %m %M %n %p %r %R %S %t %T "
      "%u %U %w %W %x %X %y %Y %%";
  for (std::int64_t day = 10'000; day < 20'000; day += 37) {
    SystemTime time{};
    setDateFromDays(day, time);
    time.hour = static_cast<std::uint16_t>(day % 24);
    time.minute = static_cast<std::uint16_t>(day % 60);
    time.second = static_cast<std::uint16_t>(day % 59);
    std::tm reference{};
    reference.tm_year = time.year - 1900;
    reference.tm_mon = time.month - 1;
    reference.tm_mday = time.day;
    reference.tm_hour = time.hour;
    reference.tm_min = time.minute;
    reference.tm_sec = time.second;
    reference.tm_wday = time.dayOfWeek;
    reference.tm_yday = static_cast<int>(day - daysFromDate(time.year, 1, 1));
    char expected[512];
    ASSERT_NE(std::strftime(expected, sizeof expected, layout, &reference), 0U);
    StringBuffer out;
    DateParser().format(layout, time, out);
    ASSERT_STREQ(out.getString(), expected);
  }
}
#endif

TEST(DateParserTest, FormatsTimesThatAreNoneWithoutReadingOutside) {
  const SystemTime wrong{65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535};
  StringBuffer out;
  DateParser().format("%a %b %q %", wrong, out);
  EXPECT_STREQ(out.getString(), "? ? %q %");
  DateParser().format("%c%j%U%W%u%I", SystemTime{}, out);
}

TEST(CalendarTest, CountsDaysBothWays) {
  EXPECT_EQ(daysFromDate(1970, 1, 1), 0);
  EXPECT_EQ(weekdayFromDays(0), 4);
  int year = 1600;
  int month = 1;
  int day = 1;
  for (std::int64_t days = daysFromDate(1600, 1, 1); year < 2101; ++days) {
    SystemTime time{};
    setDateFromDays(days, time);
    ASSERT_EQ(std::tie(time.year, time.month, time.day), std::make_tuple(year, month, day));
    ASSERT_EQ(daysFromDate(year, month, day), days);
    if (++day > daysInMonth(year, month)) {
      day = 1;
      if (++month > 12) month = 1, ++year;
    }
  }
}

}  // namespace
}  // namespace zantrel

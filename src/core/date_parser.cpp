// Reading of dates. The RFC 822 form is read as the C library's scanf("%d%s%d") and ("%d:%d:%d")
// read it: blanks before a number do not matter, and what follows the part that was understood is
// ignored. So a zone's second name, a comment or "PM" does no harm, and nothing of it is obeyed.

#include "core/date_parser.h"

#include <algorithm>
#include <string>

#include "core/calendar.h"
#include "core/text_search.h"

namespace zantrel {
namespace {

constexpr std::size_t kMaxDateText = 199;
constexpr int kMaxYear = 9999;

constexpr bool isBlank(char c) noexcept {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}
constexpr bool isLetter(char c) noexcept {
  return c >= 'a' && c <= 'z';
}

/// Reads through a text from left to right.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  std::string_view rest() const noexcept { return rest_; }
  char peek() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }
  void skipBlanks() noexcept {
    while (isBlank(peek())) rest_.remove_prefix(1);
  }
  bool skip(char c) noexcept {
    if (peek() != c || rest_.empty()) return false;
    rest_.remove_prefix(1);
    return true;
  }
  /// Blanks, then 1..maxDigits digits. Numbers too large for a date stay large, but do not
  /// overflow.
  bool number(int& value, int maxDigits = 199) noexcept {
    skipBlanks();
    if (!isDigit(peek())) return false;
    value = 0;
    for (int i = 0; i < maxDigits && isDigit(peek()); ++i) {
      value = std::min(value * 10 + (peek() - '0'), 1'000'000);
      rest_.remove_prefix(1);
    }
    return true;
  }
  /// What stands before the next character that is not of a kind.
  template <class Kind>
  std::string_view take(Kind kind) noexcept {
    std::size_t n = 0;
    while (n < rest_.size() && kind(rest_[n])) ++n;
    const std::string_view taken = rest_.substr(0, n);
    rest_.remove_prefix(n);
    return taken;
  }

 private:
  std::string_view rest_;
};

struct Name {
  std::string_view name;
  int value;
};

constexpr Name kWeekdays[] = {{"sun", 0}, {"mon", 1}, {"tue", 2}, {"wed", 3},
                              {"thu", 4}, {"fri", 5}, {"sat", 6}};
constexpr Name kMonths[] = {{"jan", 1},
                            {"feb", 2},
                            {"mar", 3},
                            {"apr", 4},
                            {"may", 5},
                            {"jun", 6},
                            {"jul", 7},
                            {"aug", 8},
                            {"sep", 9},
                            {"oct", 10},
                            {"nov", 11},
                            {"dec", 12},
                            // Names that other languages' mailers write.
                            {"ian", 1},
                            {"fev", 2},
                            {"mai", 5},
                            {"set", 9},
                            {"okt", 10},
                            {"dez", 12}};
constexpr Name kZones[] = {{"ut", 0},        {"gmt", 0},       {"z", 0},         {"est", -5 * 60},
                           {"edt", -4 * 60}, {"cst", -6 * 60}, {"cdt", -5 * 60}, {"mst", -7 * 60},
                           {"mdt", -6 * 60}, {"pst", -8 * 60}, {"pdt", -7 * 60}, {"a", -1 * 60},
                           {"m", -12 * 60},  {"n", 60},        {"y", 12 * 60}};

template <std::size_t N>
int find(const Name (&names)[N], std::string_view name, int otherwise) noexcept {
  for (const Name& entry : names) {
    if (entry.name == name) return entry.value;
  }
  return otherwise;
}

/// Digits of a numeric zone as minutes: "hhmm", "hh:mm" or "hh".
int numericZone(std::string_view digits) noexcept {
  Scanner scanner(digits);
  int hours = 0;
  int minutes = 0;
  if (!scanner.number(hours, 2)) return 0;
  scanner.skip(':');
  if (isDigit(scanner.peek())) scanner.number(minutes, 2);
  return hours * 60 + minutes;
}

/// The minutes east of UTC of the zone that a text begins with; 0 where there is none or none
/// known.
int zoneMinutes(std::string_view text) noexcept {
  Scanner scanner(text);
  scanner.skipBlanks();
  scanner.skip('+');
  if (scanner.skip('-')) return -numericZone(scanner.rest());
  if (isDigit(scanner.peek())) return numericZone(scanner.rest());
  return find(kZones, scanner.take(isLetter), 0);
}

struct ParsedDate {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int zone = 0;      ///< minutes east of UTC
  int weekday = -1;  ///< as the text names it
};

/// "hour:minute" or "hour:minute:second".
bool readClock(Scanner& scanner, ParsedDate& date) noexcept {
  if (!scanner.number(date.hour) || !scanner.skip(':') || !scanner.number(date.minute)) {
    return false;
  }
  Scanner ahead = scanner;
  if (ahead.skip(':') && ahead.number(date.second)) scanner = ahead;
  return true;
}

bool looksLikeIso8601(std::string_view text) noexcept {
  return text.size() > 10 && text[4] == '-' && text[7] == '-' && text[10] == 't';
}

bool readIso8601(std::string_view text, ParsedDate& date) noexcept {
  Scanner day(text.substr(0, 10));
  if (!day.number(date.year) || !day.skip('-') || !day.number(date.month) || !day.skip('-') ||
      !day.number(date.day)) {
    return false;
  }
  std::string_view time = text.substr(11);
  std::size_t zoneAt = time.find('+');
  if (zoneAt == std::string_view::npos) zoneAt = time.find('-');
  if (zoneAt != std::string_view::npos) {
    date.zone = zoneMinutes(time.substr(zoneAt));
    time = time.substr(0, zoneAt);
  }
  Scanner clock(time);
  return readClock(clock, date);
}

bool readRfc822(std::string_view text, ParsedDate& date) noexcept {
  Scanner scanner(text);
  scanner.skipBlanks();
  date.weekday = find(kWeekdays, scanner.rest().substr(0, 3), -1);
  if (date.weekday >= 0) {
    scanner.take([](char c) { return !isBlank(c) && c != ','; });
    scanner.skipBlanks();
    scanner.skip(',');
  }
  if (!scanner.number(date.day)) return false;
  scanner.skipBlanks();
  const std::string_view month = scanner.take([](char c) { return !isBlank(c); });
  date.month = find(kMonths, month.substr(0, 3), 0);
  if (date.month == 0 || !scanner.number(date.year)) return false;
  if (date.year < 1900) date.year += date.year < 50 ? 2000 : 1900;
  if (!readClock(scanner, date)) return false;
  date.zone = zoneMinutes(scanner.rest());
  return true;
}

/// Hour 24 is the end of a day and second 60 a leap second; both run over into what follows.
bool isPossible(const ParsedDate& date) noexcept {
  return date.year >= 1 && date.year <= kMaxYear && date.month >= 1 && date.month <= 12 &&
         date.day >= 1 && date.day <= daysInMonth(date.year, date.month) && date.hour <= 24 &&
         date.minute <= 59 && date.second <= 60;
}

SystemTime toUtc(const ParsedDate& date) noexcept {
  constexpr int kDay = 24 * 60 * 60;
  const std::int64_t days = daysFromDate(date.year, date.month, date.day);
  const std::int64_t seconds =
      (date.hour * 60 + date.minute - date.zone) * std::int64_t{60} + date.second;
  const std::int64_t moved = (seconds >= 0 ? seconds : seconds - kDay + 1) / kDay;
  const int ofDay = static_cast<int>(seconds - moved * kDay);

  SystemTime utc;
  setDateFromDays(days + moved, utc);
  // A weekday that the text names is believed unless the day moved, even when it is wrong.
  if (moved == 0 && date.weekday >= 0) utc.dayOfWeek = static_cast<std::uint16_t>(date.weekday);
  utc.hour = static_cast<std::uint16_t>(ofDay / 3600);
  utc.minute = static_cast<std::uint16_t>(ofDay / 60 % 60);
  utc.second = static_cast<std::uint16_t>(ofDay % 60);
  return utc;
}

}  // namespace

bool DateParser::parseDate(std::string_view text, SystemTime& utc) const {
  char lower[kMaxDateText];
  const std::size_t size = std::min(text.size(), kMaxDateText);
  std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), lower, asciiLower);
  const std::string_view date(lower, size);

  ParsedDate parsed;
  const bool understood =
      looksLikeIso8601(date) ? readIso8601(date, parsed) : readRfc822(date, parsed);
  if (!understood || !isPossible(parsed)) return false;
  utc = toUtc(parsed);
  return true;
}

}  // namespace zantrel

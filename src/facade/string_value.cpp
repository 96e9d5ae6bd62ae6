#include "facade/string_value.h"

#include <chrono>

#include "core/encode/cls_encode.h"
#include "core/log_null.h"
#include "facade/arguments.h"

namespace zantrel {
namespace {

/// The same moment as the platform has it; false for a date or time that does not exist.
bool toSystemTime(const Zantrel::DateTime& from, SystemTime& to) {
  using namespace std::chrono;
  const auto within = [](int value, int last) { return value >= 0 && value <= last; };
  const year_month_day date{year{from.Year}, month{static_cast<unsigned>(from.Month)},
                            day{static_cast<unsigned>(from.Day)}};
  if (!within(from.Year, 9999) || !within(from.Month, 12) || !within(from.Day, 31) || !date.ok() ||
      !within(from.Hour, 23) || !within(from.Minute, 59) || !within(from.Second, 59) ||
      !within(from.Millisecond, 999)) {
    return false;
  }
  const auto narrow = [](auto value) { return static_cast<std::uint16_t>(value); };
  to.year = narrow(from.Year);
  to.month = narrow(from.Month);
  to.dayOfWeek = narrow(weekday{sys_days{date}}.c_encoding());
  to.day = narrow(from.Day);
  to.hour = narrow(from.Hour);
  to.minute = narrow(from.Minute);
  to.second = narrow(from.Second);
  to.milliseconds = narrow(from.Millisecond);
  return true;
}

}  // namespace

bool StringValue::setFromUtf8(const Zantrel::Text& text) {
  facade::assignText(string_, text);
  return true;
}

bool StringValue::clear() {
  string_.clear();
  return true;
}

bool StringValue::secureClear() {
  string_.secureClear();
  return true;
}

bool StringValue::wipe() {
  string_.wipe();
  return true;
}

bool StringValue::getUtf8X(std::string_view& out) {
  out = string_.utf8();
  return true;
}

bool StringValue::getAnsiX(ByteSpan& out) {
  out = asBytes(string_.ansi());
  return true;
}

bool StringValue::getUnicodeX(ByteSpan& out) {
  const std::u16string_view units = string_.unicode();
  out = {reinterpret_cast<const std::uint8_t*>(units.data()), 2 * units.size()};
  return true;
}

bool StringValue::setFromBytes(const DataBuffer& data, const XString& encoding) {
  string_.clear();  // "html" encodes nothing and would leave the old text
  return ClsEncode().Encode(data, encoding, string_, false);
}

bool StringValue::getBytes(const XString& encoding, DataBuffer& out) {
  return ClsEncode().Decode(string_, encoding, out, false);
}

bool StringValue::getSystemTime(Zantrel::DateTime& utc) {
  SystemTime time;
  if (!string_.getSystemTime(time)) return false;
  utc = {time.year, time.month, time.day, time.hour, time.minute, time.second, time.milliseconds};
  return true;
}

bool StringValue::loadSystemTime(const Zantrel::DateTime& utc) {
  SystemTime time;
  return toSystemTime(utc, time) && string_.loadSystemTime(time);
}

bool StringValue::readFile(const XString& path, const XString& charset) {
  LogNull log;
  return string_.readFile(path.getUtf8(), charset.getUtf8(), log);
}

bool StringValue::writeToFile(const XString& path, const XString& charset) {
  LogNull log;
  return string_.writeToFile(path.getUtf8(), charset.getUtf8(), log);
}

bool StringValue::saveToFile(const XString& path, const XString& charset) {
  LogNull log;
  return string_.saveToFile(path.getUtf8(), charset.getUtf8(), log);
}

}  // namespace zantrel

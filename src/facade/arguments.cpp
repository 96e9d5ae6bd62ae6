#include "facade/arguments.h"

#include <new>

namespace zantrel::facade {
namespace {

constexpr std::uint64_t kMostUtf8PerUnit = 3;

/// Counts what UTF-16 needs as UTF-8; half a surrogate pair counts as the three bytes of U+FFFD.
std::uint64_t utf8SizeOf(std::u16string_view units) noexcept {
  std::uint64_t size = 0;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t unit = units[i];
    const bool pair =
        (unit & 0xFC00) == 0xD800 && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00;
    if (pair) ++i;
    size += unit < 0x80 ? 1 : unit < 0x800 ? 2 : pair ? 4 : 3;
  }
  return size;
}

}  // namespace

std::uint64_t utf8Size(const Zantrel::Text& text) noexcept {
  if (!text.isUtf16()) return text.size();
  const std::uint64_t most = text.size() * kMostUtf8PerUnit;
  return most <= kMaxTextBytes ? most : utf8SizeOf(text.utf16());
}

SystemTime toSystemTime(const Zantrel::DateTime& from) noexcept {
  const auto narrow = [](int value) {
    constexpr std::uint16_t kNever = 0xFFFF;
    return value >= 0 && value < kNever ? static_cast<std::uint16_t>(value) : kNever;
  };
  SystemTime to;
  to.year = narrow(from.Year);
  to.month = narrow(from.Month);
  to.day = narrow(from.Day);
  to.hour = narrow(from.Hour);
  to.minute = narrow(from.Minute);
  to.second = narrow(from.Second);
  to.milliseconds = narrow(from.Millisecond);
  return to;
}

Zantrel::DateTime toDateTime(const SystemTime& from) noexcept {
  return {from.year, from.month, from.day, from.hour, from.minute, from.second, from.milliseconds};
}

void assignText(XString& to, const Zantrel::Text& from) {
  const bool stored =
      from.isUtf16() ? to.setFromUnicode2(from.utf16()) : to.setFromUtf8(from.utf8());
  if (!stored) throw std::bad_alloc();
}

}  // namespace zantrel::facade

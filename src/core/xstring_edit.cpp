// Appending, searching and editing: all in the UTF-8 form.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "core/date_parser.h"
#include "core/text_search.h"
#include "core/unicode_case.h"
#include "core/utf8.h"
#include "core/xstring.h"

namespace zantrel {
namespace {

/// One character as UTF-8; empty for a number that is none.
struct Utf8Bytes {
  explicit Utf8Bytes(char32_t c) : size(encodeUtf8(c, bytes)) {}
  std::string_view view() const { return {bytes, size}; }
  char bytes[4] = {};
  std::size_t size;
};

/// Where the last character of a text begins, and how many UTF-16 units it takes.
std::pair<std::size_t, std::uint32_t> lastCharacter(std::string_view text) {
  std::size_t start = text.size() - 1;
  while (start > 0 && text.size() - start < 4 && (text[start] & 0xC0) == 0x80) --start;
  const Utf8Character c = decodeUtf8(text.substr(start));
  if (c.value == kNoCharacter || c.size != text.size() - start) return {text.size() - 1, 1};
  return {start, c.value > 0xFFFF ? 2 : 1};
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n\v\f");
  return first != std::string_view::npos ? text.substr(first) : std::string_view();
}

/// Whether a decimal number that no double can hold is too large rather than too small: the place
/// of its first digit that is not zero, moved by the exponent.
bool isTooLarge(std::string_view number) {
  const std::size_t e = number.find_first_of("eE");
  const std::string_view mantissa = number.substr(0, e);
  const auto digit = static_cast<std::ptrdiff_t>(mantissa.find_first_of("123456789"));
  const auto point = static_cast<std::ptrdiff_t>(std::min(mantissa.find('.'), mantissa.size()));
  std::int64_t exponent = 0;
  if (e != std::string_view::npos) {
    const std::string_view text = number.substr(e + (number.substr(e + 1, 1) == "+" ? 2 : 1));
    const auto result = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (result.ec == std::errc::result_out_of_range) return text.front() != '-';
  }
  return exponent > digit - point;
}

}  // namespace

bool XString::beginEdit() {
  if (!makeUtf8()) return false;
  dropAllButUtf8();
  return true;
}

bool XString::replaceText(StringBuffer&& utf8) {
  utf8_ = std::move(utf8);
  dropAllButUtf8();
  return true;
}

bool XString::appendUtf8(const char* text) {
  return appendUtf8(text != nullptr ? std::string_view(text) : std::string_view());
}

bool XString::appendUtf8(std::string_view text) {
  if (text.empty()) return true;
  if (!makeUtf8() || !utf8_.append(text)) return false;
  dropAllButUtf8();
  return true;
}

bool XString::prependUtf8(const char* text) {
  if (text == nullptr || *text == '\0') return true;
  if (!makeUtf8()) return false;
  const std::string_view front(text);
  StringBuffer joined = StringBuffer::withCapacity(front.size() + utf8_.getSize());
  return joined.append(front) && joined.append(utf8_) && replaceText(std::move(joined));
}

bool XString::appendInt(std::int64_t value) {
  StringBuffer digits;
  return digits.appendInt(value) && appendUtf8(digits.view());
}

bool XString::equalsIgnoreCaseUtf8(std::string_view text) const {
  return equalsIgnoreCase(utf8(), text);
}

bool XString::beginsWithUtf8(std::string_view prefix) const {
  return utf8().substr(0, prefix.size()) == prefix;
}

bool XString::containsSubstringUtf8(std::string_view text) const {
  return TextSearcher(text).find(utf8()) != std::string_view::npos;
}

bool XString::containsSubstringNoCaseUtf8(std::string_view text) const {
  StringBuffer foldedText;
  StringBuffer foldedSelf;
  return appendFoldedCase(text, foldedText) && appendFoldedCase(utf8(), foldedSelf) &&
         foldedSelf.containsSubstring(foldedText.view());
}

bool XString::trim2() {
  if (!beginEdit()) return false;
  utf8_.trim2();
  return true;
}

bool XString::toCRLF() {
  if (!beginEdit()) return false;
  utf8_.toCRLF();
  return true;
}

bool XString::toLF() {
  if (!beginEdit()) return false;
  utf8_.toLF();
  return true;
}

bool XString::rewriteWith(bool (*rewrite)(std::string_view, StringBuffer&)) {
  if (!makeUtf8()) return false;
  StringBuffer changed = StringBuffer::withCapacity(utf8_.getSize());
  return rewrite(utf8_.view(), changed) && replaceText(std::move(changed));
}

bool XString::toLowerCase() {
  return rewriteWith(appendLowerCase);
}

bool XString::toUpperCase() {
  return rewriteWith(appendUpperCase);
}

// The other forms go last: what is looked for may be part of them.

std::uint32_t XString::replaceAllOccurancesUtf8(std::string_view find,
                                                std::string_view replacement) {
  const std::uint32_t count = makeUtf8() ? utf8_.replaceAllOccurances(find, replacement) : 0;
  if (utf8Valid_) dropAllButUtf8();
  return count;
}

bool XString::replaceFirstOccuranceUtf8(std::string_view find, std::string_view replacement) {
  const bool found = makeUtf8() && utf8_.replaceFirstOccurance(find, replacement);
  if (utf8Valid_) dropAllButUtf8();
  return found;
}

std::uint32_t XString::replaceChar(char32_t from, char32_t to) {
  const Utf8Bytes old(from);
  const Utf8Bytes replacement(to);
  if (old.size == 0 || replacement.size == 0 || !beginEdit()) return 0;
  return utf8_.replaceAllOccurances(old.view(), replacement.view());
}

std::uint32_t XString::removeCharOccurances(char32_t c) {
  const Utf8Bytes old(c);
  return old.size != 0 && beginEdit() ? utf8_.replaceAllOccurances(old.view(), {}) : 0;
}

bool XString::chopAtFirstChar(char32_t c) {
  const Utf8Bytes bytes(c);
  if (bytes.size == 0 || !makeUtf8()) return false;
  const std::size_t at = utf8_.view().find(bytes.view());
  if (at == std::string_view::npos) return false;
  utf8_.truncate(static_cast<std::uint32_t>(at));
  dropAllButUtf8();
  return true;
}

bool XString::shortenNumChars(std::uint32_t n) {
  if (!beginEdit()) return false;
  std::string_view rest = utf8_.view();
  while (n > 0 && !rest.empty()) {
    const auto [start, units] = lastCharacter(rest);
    rest = rest.substr(0, start);
    n -= std::min(n, units);
  }
  utf8_.truncate(static_cast<std::uint32_t>(rest.size()));
  return true;
}

std::int32_t XString::intValue() const {
  std::string_view text = withoutBlanks(utf8());
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  std::int32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  return text[0] == '-' ? std::numeric_limits<std::int32_t>::min()
                        : std::numeric_limits<std::int32_t>::max();
}

double XString::doubleValue() const {
  std::string_view text = withoutBlanks(utf8());
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (negative || text[0] == '+')) text.remove_prefix(1);
  const bool isNumber = !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '.');
  if (!isNumber) return 0;
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    const std::string_view number(text.data(), static_cast<std::size_t>(result.ptr - text.data()));
    value = isTooLarge(number) ? std::numeric_limits<double>::infinity() : 0;
  }
  return negative ? -value : value;
}

bool XString::getSystemTime(SystemTime& utc) const {
  return DateParser().parseDate(utf8(), utc);
}

bool XString::loadSystemTime(const SystemTime& utc) {
  StringBuffer text;
  DateParser().gmtDate(utc, text);
  return setFromUtf8(text.view());
}

}  // namespace zantrel

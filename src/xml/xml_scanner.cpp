#include "xml/xml_scanner.h"

#include <algorithm>

#include "core/ascii_text.h"
#include "core/log_base.h"
#include "core/utf8.h"
#include "core/xstring.h"

namespace zantrel {

namespace {

// Names of any length come from outside; a log needs their beginning.
std::string beginning(std::string_view text) {
  constexpr std::size_t kMost = 100;
  if (text.size() <= kMost) return std::string(text);
  std::size_t size = kMost;
  while (size > 0 && (text[size] & 0xC0) == 0x80) --size;
  return std::string(text.substr(0, size)) + "...";
}

}  // namespace

// Lines end with LF, CR LF or CR, as they do for XML.
void XmlFault::log(std::string_view document, LogBase& log) const {
  const char* const end = document.data() + document.size();
  std::int64_t line = 1;
  std::int64_t column = 1;
  for (const char* c = document.data(); c != at; ++c) {
    const bool endsLine = *c == '\n' || (*c == '\r' && (c + 1 == end || c[1] != '\n'));
    if (endsLine) {
      ++line;
      column = 1;
    } else if ((*c & 0xC0) != 0x80) {
      ++column;
    }
  }
  log.logError(text);
  log.logData64("line", line);
  log.logData64("column", column);
  if (label != nullptr) log.logDataStr(label, XString(std::string_view(value)));
  if (!entity.empty()) log.logDataStr("inEntity", XString(std::string_view(entity)));
}

bool XmlScanner::fail(const char* text, const char* place, const char* label,
                      std::string_view value) const {
  fault_->text = text;
  fault_->at = inDocument(place);
  fault_->label = label;
  fault_->value = beginning(value);
  fault_->entity = entity_ != nullptr ? beginning(entity_->name) : std::string();
  return false;
}

bool XmlScanner::readSpace() {
  return skipSpace() || failHere("White space is missing here.");
}

bool XmlScanner::read(std::string_view expected) {
  return skip(expected) || fail("Something else is expected here.", at_, "expected", expected);
}

bool XmlScanner::readName(std::string_view& name) {
  const char* const nameEnd = skipXmlName(at_, end_);
  if (nameEnd == at_) return failHere("A name is expected here.");
  name = {at_, static_cast<std::size_t>(nameEnd - at_)};
  at_ = nameEnd;
  return true;
}

bool XmlScanner::readNameToken() {
  const char* const from = at_;
  at_ = skipXmlNameRest(at_, end_);
  return at_ != from || failHere("A name is expected here.");
}

bool XmlScanner::readQuoted(std::string_view& text) {
  const char quote = peek();
  if (!isXmlQuote(quote)) return failHere("A text in quotes is expected here.");
  const auto* const quoteAt = static_cast<const char*>(std::memchr(at_ + 1, quote, left() - 1));
  if (quoteAt == nullptr) return failHere("The text in quotes has no end.");
  text = {at_ + 1, static_cast<std::size_t>(quoteAt - at_ - 1)};
  at_ = quoteAt + 1;
  return true;
}

bool XmlScanner::readEquals() {
  skipSpace();
  if (!read("=")) return false;
  skipSpace();
  return true;
}

bool XmlScanner::readComment() {
  constexpr std::string_view kStart = "<!--";
  const char* const begin = at_;
  at_ += kStart.size();
  const std::size_t size = std::string_view(at_, left()).find("--");
  if (size == std::string_view::npos) return fail("The comment has no end.", begin);
  at_ += size;
  return skip("-->") || failHere("A comment must not hold two hyphens.");
}

bool XmlScanner::readInstruction() {
  const char* const begin = at_;
  at_ += 2;
  std::string_view target;
  if (!readName(target)) return false;
  constexpr std::string_view kReserved = "xml";
  if (std::equal(target.begin(), target.end(), kReserved.begin(), kReserved.end(),
                 [](char a, char b) { return asciiLower(a) == b; }))
    return fail("Only the declaration at the very start is named xml.", begin);
  if (skip("?>")) return true;
  if (!readSpace()) return false;
  const std::size_t size = std::string_view(at_, left()).find("?>");
  if (size == std::string_view::npos) return fail("The processing instruction has no end.", begin);
  at_ += size + 2;
  return true;
}

bool XmlScanner::readCharacterReference(char32_t& character) {
  const char* const begin = at_;
  at_ += 2;
  const bool isHex = skip('x');
  const unsigned base = isHex ? 16 : 10;
  const char* const digits = at_;
  std::uint32_t value = 0;
  for (;; ++at_) {
    const char c = peek();
    const char lower = asciiLower(c);
    unsigned digit = base;
    if (c >= '0' && c <= '9')
      digit = static_cast<unsigned>(c - '0');
    else if (isHex && lower >= 'a' && lower <= 'f')
      digit = static_cast<unsigned>(lower - 'a') + 10;
    if (digit == base) break;
    value = std::min<std::uint32_t>(value * base + digit, 0x110000);
  }
  if (at_ == digits || peek() != ';') return fail("This is not a reference to a character.", begin);
  ++at_;
  character = value;
  return isXmlCharacter(character) ||
         fail("The reference is to a character that XML does not allow.", begin);
}

bool XmlScanner::readEntityReference(std::string_view& name) {
  const char* const begin = at_++;
  const char* const nameEnd = skipXmlName(at_, end_);
  if (nameEnd == at_ || nameEnd == end_ || *nameEnd != ';')
    return fail("This is not a reference to an entity.", begin);
  name = {at_, static_cast<std::size_t>(nameEnd - at_)};
  at_ = nameEnd + 1;
  return true;
}

}  // namespace zantrel

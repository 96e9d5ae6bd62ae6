#include "core/xstring.h"

#include <algorithm>
#include <utility>

#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "platform/ansi_code_page.h"
#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

constexpr char16_t kNoUnits[1] = {0};

/// Converts all of a text. False when nothing came of it (no table, no storage); `exact` tells
/// whether every character survived.
bool convert(int from, int to, ByteSpan text, DataBuffer& out, bool& exact) {
  const std::uint32_t before = out.getSize();
  EncodingConvert converter;
  exact = converter.EncConvert(from, to, text.data(), text.size(), out);
  return exact || out.getSize() > before;
}

/// Conversions skip a byte-order mark at the start: what they make of such a text lacks it.
bool beginsWithMark(int codePage, ByteSpan text) {
  const ByteSpan mark = byteOrderMarkOf(codePage);
  return !mark.empty() && text.size() >= mark.size() &&
         std::equal(mark.begin(), mark.end(), text.begin());
}

void wipeStorage(StringBuffer& buffer) {
  buffer.clear();
  char* const block = buffer.prepare(0);
  if (block != nullptr && buffer.capacity() > 0) {
    secureWipe(block, static_cast<std::size_t>(buffer.capacity()));
  }
}

}  // namespace

XString::XString(const XString& other) : ZantrelObject() {
  *this = other;
}

XString& XString::operator=(const XString& other) {
  if (this == &other) return *this;
  clear();
  if (other.isEmpty()) return *this;
  ansiState_ = other.ansiState_;
  unicodeLossy_ = other.unicodeLossy_;
  utf8Valid_ = other.utf8Valid_ && utf8_.setString(other.utf8_.view());
  ansiValid_ = other.ansiValid_ && ansi_.setString(other.ansi_.view());
  if (other.unicodeValid_) unicode_ = other.unicode_;
  unicodeValid_ = other.unicodeValid_ && unicode_.getSize() == other.unicode_.getSize();
  if (!utf8Valid_ && !unicodeValid_ && !isAnsiSource()) clear();  // nothing could be copied
  return *this;
}

XString::XString(XString&& other) noexcept : ZantrelObject() {
  *this = std::move(other);
}

XString& XString::operator=(XString&& other) noexcept {
  if (this == &other) return *this;
  ansiState_ = other.ansiState_;
  unicodeLossy_ = other.unicodeLossy_;
  unicodeValid_ = other.unicodeValid_;
  ansiValid_ = other.ansiValid_;
  utf8Valid_ = other.utf8Valid_;
  unicode_ = std::move(other.unicode_);
  ansi_ = std::move(other.ansi_);
  utf8_ = std::move(other.utf8_);
  other.clear();
  return *this;
}

void XString::clear() {
  unicode_.clear();
  ansi_.clear();
  utf8_.clear();
  unicodeValid_ = ansiValid_ = utf8Valid_ = true;
  ansiState_ = AnsiState::Unknown;
}

/// The byte forms are emptied before they are overwritten, so that only the UTF-16 form's old
/// content is. This order is deliberate and fixed; wipe() is for secrets.
void XString::secureClear() {
  ansi_.clear();
  utf8_.clear();
  unicode_.secureClear();
  unicode_.clearWithDeallocate();
  unicodeValid_ = ansiValid_ = utf8Valid_ = true;
  ansiState_ = AnsiState::Unknown;
  ansi_.secureClear();
  utf8_.secureClear();
  ansi_.minimizeMemory();
  utf8_.minimizeMemory();
}

void XString::wipe() {
  wipeStorage(utf8_);
  wipeStorage(ansi_);
  unicode_.clear();
  if (unicode_.capacity() > 0) secureWipe(unicode_.getData2(), unicode_.capacity());
  clear();
}

void XString::minimizeMemory() {
  if (!isEmpty()) {
    ansiValid_ = isAnsiSource() && !utf8Valid_;
    unicodeValid_ = !utf8Valid_ && !ansiValid_;
    if (!ansiValid_) ansiState_ = AnsiState::Unknown;
  }
  if (isEmpty() || !utf8Valid_) utf8_.clear();
  if (isEmpty() || !ansiValid_) ansi_.clear();
  if (isEmpty() || !unicodeValid_) unicode_.clear();
  utf8_.minimizeMemory();
  ansi_.minimizeMemory();
  unicode_.minimizeMemory();
}

bool XString::isEmpty() const {
  if (utf8Valid_) return utf8_.empty();
  return unicodeValid_ ? unicode_.getSize() == 0 : ansi_.empty();
}

bool XString::setFromUtf8(const char* text) {
  return setFromUtf8(text != nullptr ? std::string_view(text) : std::string_view());
}

bool XString::setFromUtf8(std::string_view text) {
  const bool stored = utf8_.setString(text);
  if (!stored || text.empty()) {
    clear();
    return stored;
  }
  dropAllButUtf8();
  return true;
}

bool XString::setFromAnsi(const char* text) {
  return setFromAnsi(text != nullptr ? std::string_view(text) : std::string_view());
}

bool XString::setFromAnsi(std::string_view text) {
  const bool stored = ansi_.setString(text);
  if (!stored || text.empty()) {
    clear();
    return stored;
  }
  utf8_.clear();
  unicode_.clear();
  utf8Valid_ = unicodeValid_ = false;
  ansiValid_ = true;
  ansiState_ = AnsiState::Faithful;
  return true;
}

bool XString::setFromUnicode2(const char16_t* text) {
  return setFromUnicode2(text != nullptr ? std::u16string_view(text) : std::u16string_view());
}

bool XString::setFromUnicode2(std::u16string_view text) {
  if (text.empty()) {
    clear();
    return true;
  }
  // A text that is part of this object's own form fits, so nothing moves before it is copied.
  const std::size_t bytes = text.size() * sizeof(char16_t);
  unicode_.clear();
  const bool stored = unicode_.reserve(bytes + 2) && unicode_.append(text.data(), bytes) &&
                      unicode_.append(kNoUnits, sizeof kNoUnits);
  if (!stored) {
    clear();
    return false;
  }
  utf8_.clear();
  ansi_.clear();
  utf8Valid_ = ansiValid_ = false;
  unicodeValid_ = true;
  unicodeLossy_ = false;
  ansiState_ = AnsiState::Unknown;
  return true;
}

void XString::dropAllButUtf8() {
  unicode_.clear();
  ansi_.clear();
  utf8Valid_ = true;
  unicodeValid_ = ansiValid_ = false;
  ansiState_ = AnsiState::Unknown;
}

bool XString::makeUtf8() const {
  if (utf8Valid_) return true;
  DataBuffer converted;
  bool exact = false;
  if (isAnsiSource()) {
    converted.reserve(std::size_t{ansi_.getSize()} + ansi_.getSize() / 16 + 4);
    if (!convert(ansiCodePage(), codepage::kUtf8, asBytes(ansi_.view()), converted, exact)) {
      return false;
    }
  } else {
    const ByteSpan units(unicode_.getData2(), getSizeUnicode());
    if (!convert(codepage::kUtf16Le, codepage::kUtf8, units, converted, exact)) return false;
  }
  utf8_.clear();
  utf8Valid_ = utf8_.takeBytes(converted);
  return utf8Valid_;
}

bool XString::makeAnsi() const {
  if (ansiValid_) return true;
  DataBuffer converted;
  bool exact = false;
  const bool fromUtf8 = utf8Valid_;
  const ByteSpan source =
      fromUtf8 ? asBytes(utf8_.view()) : ByteSpan(unicode_.getData2(), getSizeUnicode());
  const int from = fromUtf8 ? codepage::kUtf8 : codepage::kUtf16Le;
  if (!convert(from, ansiCodePage(), source, converted, exact)) return false;
  ansi_.clear();
  ansiValid_ = ansi_.takeBytes(converted);
  exact = exact && !beginsWithMark(from, source);
  if (ansiValid_) ansiState_ = exact ? AnsiState::Faithful : AnsiState::Lossy;
  return ansiValid_;
}

bool XString::makeUnicode() const {
  if (unicodeValid_) return true;
  bool exact = false;
  const int from = utf8Valid_ ? codepage::kUtf8 : ansiCodePage();
  const ByteSpan source = asBytes(utf8Valid_ ? utf8_.view() : ansi_.view());
  unicode_.clear();
  if (!convert(from, codepage::kUtf16Le, source, unicode_, exact)) return false;
  if (unicode_.getSize() > 0 &&
      !(unicode_.reserve(sizeof kNoUnits) && unicode_.append(kNoUnits, sizeof kNoUnits))) {
    return false;
  }
  unicode_.minimizeMemory();
  unicodeValid_ = true;
  unicodeLossy_ = !exact || beginsWithMark(from, source);
  return true;
}

const StringBuffer& XString::getUtf8Sb() const {
  if (!makeUtf8()) utf8_.clear();
  return utf8_;
}

const StringBuffer& XString::ansiForm() const {
  if (!makeAnsi()) ansi_.clear();
  return ansi_;
}

const char16_t* XString::getUnicode() const {
  if (!makeUnicode() || unicode_.getSize() == 0) return kNoUnits;
  return reinterpret_cast<const char16_t*>(unicode_.getData2());
}

std::u16string_view XString::unicode() const {
  const char16_t* const text = getUnicode();
  return {text, text != kNoUnits ? unicode_.getSize() / sizeof(char16_t) - 1 : 0};
}

std::uint32_t XString::getSizeUnicode() const {
  if (!makeUnicode() || unicode_.getSize() == 0) return 0;
  return unicode_.getSize() - static_cast<std::uint32_t>(sizeof kNoUnits);
}

std::uint32_t XString::getNumChars() const {
  return ansiValid_ ? ansi_.getSize()
                    : getSizeUnicode() / static_cast<std::uint32_t>(sizeof(char16_t));
}

bool XString::appendFromEncoding(ByteSpan bytes, const char* charsetName) {
  const int codePage = textCodePage(charsetName);
  if (codePage == codepage::kUnknown) return false;
  if (codePage == codepage::kUtf8) return appendUtf8(asText(bytes));
  StringBuffer name(charsetName);
  name.trim2();
  if (name.equalsIgnoreCase("ansi") && makeAnsi() && ansiState_ != AnsiState::Lossy) {
    if (!ansi_.append(asText(bytes))) return false;
    utf8_.clear();
    unicode_.clear();
    utf8Valid_ = unicodeValid_ = false;
    ansiState_ = AnsiState::Unknown;
    return true;
  }
  DataBuffer converted;
  bool exact = false;
  if (!convert(codePage, codepage::kUtf8, bytes, converted, exact)) return bytes.empty();
  return appendUtf8(converted.text()) && exact;
}

bool XString::getConverted(const char* charsetName, DataBuffer& out) const {
  out.clear();
  const int codePage = textCodePage(charsetName);
  return codePage != codepage::kUnknown && getConverted(codePage, out);
}

bool XString::getConverted(int codePage, DataBuffer& out) const {
  out.clear();
  if (isEmpty()) return true;
  EncodingConvert converter;
  if (isUnicodeSource()) {
    return converter.EncConvert(codepage::kUtf16Le, codePage, unicode_.getData2(), getSizeUnicode(),
                                out);
  }
  if (!makeUtf8()) return false;
  return converter.EncConvert(codepage::kUtf8, codePage, utf8_.getString(), utf8_.getSize(), out);
}

int textCodePage(const char* charsetName) {
  StringBuffer name(charsetName);
  name.trim2();
  return name.empty() ? codepage::kUtf8 : CharsetNaming::charsetToCodePage(name.view());
}

}  // namespace zantrel

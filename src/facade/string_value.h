#pragma once
// The value behind the public class ZtString: one XString under the vocabulary of the facade.

#include <zantrel/types.h>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/xstring.h"

namespace zantrel {

class StringValue final {
 public:
  const XString& string() const noexcept { return string_; }

  bool setFromUtf8(const Zantrel::Text& text);
  bool setFromAnsi(ByteSpan ansi) { return string_.setFromAnsi(asText(ansi)); }
  bool setFromUnicode2(const Zantrel::Text& text) { return setFromUtf8(text); }
  bool clear();
  bool secureClear();
  bool wipe();

  bool getUtf8X(std::string_view& out);
  bool getAnsiX(ByteSpan& out);
  bool getUnicodeX(ByteSpan& out);
  std::uint32_t getSizeUtf8() { return string_.getSizeUtf8(); }
  std::uint32_t getSizeAnsi() { return string_.getSizeAnsi(); }
  std::uint32_t getSizeUnicode() { return string_.getSizeUnicode(); }
  std::uint32_t getNumChars() { return string_.getNumChars(); }
  bool isEmpty() { return string_.isEmpty(); }

  bool appendUtf8(std::string_view text) { return string_.appendUtf8(text); }
  bool prependUtf8(const XString& text) { return string_.prependUtf8(text.getUtf8()); }
  bool appendInt(std::int64_t value) { return string_.appendInt(value); }
  bool appendFromEncoding(ByteSpan data, const XString& charset) {
    return string_.appendFromEncoding(data, charset.getUtf8());
  }
  bool getConverted(const XString& charset, DataBuffer& out) {
    return string_.getConverted(charset.getUtf8(), out);
  }

  bool equalsUtf8(std::string_view text) { return string_.equalsUtf8(text); }
  bool equalsIgnoreCaseUtf8(std::string_view text) { return string_.equalsIgnoreCaseUtf8(text); }
  bool beginsWithUtf8(std::string_view text) { return string_.beginsWithUtf8(text); }
  bool containsSubstringUtf8(std::string_view text) { return string_.containsSubstringUtf8(text); }
  bool containsSubstringNoCaseUtf8(std::string_view text) {
    return string_.containsSubstringNoCaseUtf8(text);
  }

  bool trim2() { return string_.trim2(); }
  bool toCRLF() { return string_.toCRLF(); }
  bool toLF() { return string_.toLF(); }
  bool toLowerCase() { return string_.toLowerCase(); }
  bool toUpperCase() { return string_.toUpperCase(); }
  std::uint32_t replaceAllOccurancesUtf8(std::string_view find, std::string_view replacement) {
    return string_.replaceAllOccurancesUtf8(find, replacement);
  }
  bool replaceFirstOccuranceUtf8(std::string_view find, std::string_view replacement) {
    return string_.replaceFirstOccuranceUtf8(find, replacement);
  }
  std::uint32_t replaceChar(std::uint32_t from, std::uint32_t to) {
    return string_.replaceChar(from, to);
  }
  std::uint32_t removeCharOccurances(std::uint32_t c) { return string_.removeCharOccurances(c); }
  bool chopAtFirstChar(std::uint32_t c) { return string_.chopAtFirstChar(c); }
  bool shortenNumChars(std::uint32_t count) { return string_.shortenNumChars(count); }

  bool base64Encode(const XString& charset) { return string_.base64Encode(charset.getUtf8()); }
  bool base64Decode(const XString& charset) { return string_.base64Decode(charset.getUtf8()); }
  bool qpEncode(const XString& charset) { return string_.qpEncode(charset.getUtf8()); }
  bool qpDecode(const XString& charset) { return string_.qpDecode(charset.getUtf8()); }
  bool hexEncode(const XString& charset) { return string_.hexEncode(charset.getUtf8()); }
  bool hexDecode(const XString& charset) { return string_.hexDecode(charset.getUtf8()); }
  bool urlDecode(const XString& charset) { return string_.urlDecode(charset.getUtf8()); }
  bool encodeXMLSpecial() { return string_.encodeXMLSpecial(); }
  bool decodeXMLSpecial() { return string_.decodeXMLSpecial(); }
  bool entityEncode_A() { return string_.entityEncode_A(); }
  bool entityDecode_A() { return string_.entityDecode_A(); }
  bool autoLinkUrls() { return string_.autoLinkUrls(); }
  bool obfus() { return string_.obfus(); }
  bool unobfus() { return string_.unobfus(); }

  bool setFromBytes(const DataBuffer& data, const XString& encoding);
  bool getBytes(const XString& encoding, DataBuffer& out);

  std::int32_t intValue() { return string_.intValue(); }
  double doubleValue() { return string_.doubleValue(); }
  bool getSystemTime(Zantrel::DateTime& utc);
  bool loadSystemTime(const Zantrel::DateTime& utc);

  bool readFile(const XString& path, const XString& charset);
  bool writeToFile(const XString& path, const XString& charset);
  bool saveToFile(const XString& path, const XString& charset);

 private:
  XString string_;
};

}  // namespace zantrel

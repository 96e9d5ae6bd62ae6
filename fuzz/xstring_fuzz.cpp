// XString against a plain std::u32string: a random sequence of operations is done on both, and
// after each the text must read the same in UTF-8 and in UTF-16, whatever forms are valid at that
// moment. With a first byte that is odd the bytes themselves are the text: then only survival, the
// terminators and the round trips are checked, since no model says what ill-formed text becomes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/unicode_case.h"
#include "core/utf8.h"
#include "core/xstring.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

// Characters of one to four bytes, with and without case and a place in code page 1252. The
// byte-order mark is left out: conversion drops it at the start of a text.
constexpr char32_t kAlphabet[] = {U'a',    U'B',     U' ',  U'\t', U'\r',  U'\n',  U'&',   U'<',
                                  U'"',    U'=',     U'0',  0xC9,  0xD7,   0xDF,   0xE9,   0x130,
                                  0x17F,   0x20AC,   0x3A3, 0x3C2, 0x65E5, 0xFFFD, 0xFFFF, 0x10400,
                                  0x1F600, 0x10FFFF, U'.',  U'-',  0x81,   0x2C62, U'+',   U'Z'};

/// Hands out the input piece by piece; zeros when it is used up.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool empty() const { return size_ == 0; }
  std::uint8_t byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  char32_t character() { return kAlphabet[byte() % std::size(kAlphabet)]; }
  std::u32string text() {
    std::u32string result(byte() % 24, U' ');
    std::generate(result.begin(), result.end(), [this] { return character(); });
    return result;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

std::string toUtf8(const std::u32string& text) {
  std::string result;
  char bytes[4];
  for (const char32_t c : text) result.append(bytes, encodeUtf8(c, bytes));
  return result;
}

std::u16string toUtf16(const std::u32string& text) {
  std::u16string result;
  for (const char32_t c : text) {
    if (c < 0x10000) {
      result += static_cast<char16_t>(c);
    } else {
      result += static_cast<char16_t>(0xD7C0 + (c >> 10));
      result += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
  }
  return result;
}

void replaceAll(std::u32string& text, const std::u32string& find, const std::u32string& with) {
  if (find.empty()) return;
  for (std::size_t at = 0; (at = text.find(find, at)) != text.npos; at += with.size()) {
    text.replace(at, find.size(), with);
  }
}

void shorten(std::u32string& text, unsigned units) {
  while (units > 0 && !text.empty()) {
    units -= std::min(units, text.back() > 0xFFFF ? 2U : 1U);
    text.pop_back();
  }
}

void trim(std::u32string& text) {
  static constexpr std::u32string_view kBlanks = U" \t\r\n";
  text.erase(text.find_last_not_of(kBlanks) + 1);
  text.erase(0, std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Does one operation on both.
void step(Input& in, XString& text, std::u32string& model) {
  switch (in.byte() % 25) {
    case 0:
      model = in.text();
      text.setFromUtf8(toUtf8(model));
      break;
    case 1:
      model = in.text();
      text.setFromUnicode2(toUtf16(model));
      break;
    case 2:
      model = U"\u20ACa\u00DF";
      text.setFromAnsi(
          "\x80"
          "a\xDF");
      break;
    case 3: {
      const std::u32string more = in.text();
      model += more;
      text.appendUtf8(toUtf8(more));
      break;
    }
    case 4: {
      const std::u32string more = in.text();
      model = more + model;
      text.prependUtf8(toUtf8(more).c_str());
      break;
    }
    case 5:
      text.getUnicode();
      break;
    case 6:
      text.getAnsi();
      break;
    case 7:
      text.getUtf8();
      break;
    case 8:
      trim(model);
      text.trim2();
      break;
    case 9:
      std::erase(model, U'\r');
      replaceAll(model, U"\n", U"\r\n");
      text.toCRLF();
      break;
    case 10:
      replaceAll(model, U"\r\n", U"\n");
      text.toLF();
      break;
    case 11:
      for (char32_t& c : model) c = toLowerCase(c);
      text.toLowerCase();
      break;
    case 12:
      for (char32_t& c : model) c = toUpperCase(c);
      text.toUpperCase();
      break;
    case 13: {
      const std::u32string find = in.text().substr(0, 2);
      const std::u32string with = in.text().substr(0, 4);
      replaceAll(model, find, with);
      text.replaceAllOccurancesUtf8(toUtf8(find), toUtf8(with));
      break;
    }
    case 14: {
      const char32_t from = in.character();
      const char32_t to = in.character();
      std::replace(model.begin(), model.end(), from, to);
      text.replaceChar(from, to);
      break;
    }
    case 15: {
      const char32_t c = in.character();
      std::erase(model, c);
      text.removeCharOccurances(c);
      break;
    }
    case 16: {
      const char32_t c = in.character();
      check(text.chopAtFirstChar(c) == (model.find(c) != model.npos));
      model.erase(std::min(model.find(c), model.size()));
      break;
    }
    case 17: {
      const unsigned n = in.byte() % 8;
      shorten(model, n);
      text.shortenNumChars(n);
      break;
    }
    case 18:
      text.minimizeMemory();
      break;
    case 19:
      text = XString(text);
      break;
    case 20:
      check(text.base64Encode("utf-8") && text.base64Decode("utf-8"));
      break;
    case 21:
      check(text.obfus() && text.unobfus());
      break;
    case 22:
      check(text.encodeXMLSpecial() && text.decodeXMLSpecial());
      break;
    case 23: {
      const std::u32string more = in.text();
      const std::u16string units = toUtf16(more);
      model += more;
      check(text.appendFromEncoding(
          {reinterpret_cast<const std::uint8_t*>(units.data()), 2 * units.size()}, "utf-16"));
      break;
    }
    default:
      check(text.hexEncode("utf-32") && text.hexDecode("utf-32"));
      break;
  }
  if (model.size() > 4096) {
    model.clear();
    text.clear();
  }
}

void againstModel(Input in) {
  XString text;
  std::u32string model;
  while (!in.empty()) {
    step(in, text, model);
    const std::string utf8 = toUtf8(model);
    check(text.isUtf8Valid() || text.isAnsiValid() || text.isUnicodeValid());
    check(text.isEmpty() == model.empty());
    XString copy(text);  // so that reading does not make every form valid
    check(copy.utf8() == utf8);
    check(XString(text).unicode() == toUtf16(model));
    check(copy.getNumChars() == (copy.isAnsiValid() ? copy.getSizeAnsi() : toUtf16(model).size()));
    check(copy.equalsIgnoreCaseUtf8(utf8));
  }
}

void withAnyBytes(std::string_view bytes) {
  XString text(bytes);
  XString other;
  other.setFromAnsi(bytes);
  SystemTime time;
  text.getSystemTime(time);
  text.intValue();
  text.doubleValue();
  check(text.getUnicode()[text.unicode().size()] == u'\0');
  check(text.containsSubstringNoCaseUtf8(bytes) == !bytes.empty());
  check(text.utf8() == bytes);
  check(text.base64Encode(nullptr) && text.base64Decode(nullptr) && text.utf8() == bytes);
  check(text.obfus() && text.unobfus() && text.utf8() == bytes);
  check(XString(other.utf8()).ansi() == bytes);
  for (bool (XString::*edit)() :
       {&XString::toLowerCase, &XString::entityEncode_A, &XString::entityDecode_A,
        &XString::autoLinkUrls, &XString::toCRLF}) {
    check((other.*edit)());
  }
  XString decoded(bytes);
  decoded.qpDecode("utf-8");
  decoded.urlDecode("shift_jis");
  decoded.hexDecode("iso-2022-jp");
  decoded.shortenNumChars(3);
  check(decoded.getUtf8()[decoded.getSizeUtf8()] == '\0');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  if (data[0] % 2 == 0) {
    againstModel({data + 1, size - 1});
  } else {
    withAnyBytes({reinterpret_cast<const char*>(data) + 1, size - 1});
  }
  return 0;
}

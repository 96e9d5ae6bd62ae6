#include "core/encode/cls_encode.h"

#include <gtest/gtest.h>

#include <string>

#include "core/data_buffer.h"
#include "core/encode/content_coding.h"
#include "platform/ansi_code_page.h"

namespace zantrel::test {
namespace {

DataBuffer dataOf(std::string_view bytes) {
  DataBuffer data;
  EXPECT_TRUE(data.append(bytes));
  return data;
}

std::string encoded(std::string_view bytes, const char* name) {
  XString out;
  EXPECT_TRUE(ClsEncode().Encode(dataOf(bytes), XString(name), out, false));
  return std::string(out.utf8());
}

std::string decoded(std::string_view text, const char* name) {
  DataBuffer out;
  EXPECT_TRUE(ClsEncode().Decode(XString(text), XString(name), out, false));
  return std::string(out.text());
}

TEST(ClsEncodeTest, NamesSelectTheirModes) {
  const struct {
    const char* name;
    const char* canonical;
  } cases[] = {
      {"base64", "base64"},
      {"Base-64", "base64"},
      {"base", "base64"},
      {" BASE 64 ", "base64"},
      {"Base-32", "base32"},
      {"base32hex", "base32"},
      {"b32", "base64"},
      {"32", "base64"},
      {"qp", "qp"},
      {"Quoted-Printable", "qp"},
      {"quotedprintable", "qp"},
      {"Q", "qp"},
      {"quoted-uu", "qp"},
      {"hex", "hex"},
      {"HEXADECIMAL", "hex"},
      {"he", "base64"},
      {"url", "url"},
      {"URLEncode", "url"},
      {"ur", "url"},
      {"u r l", "url"},
      {"uu", "uu"},
      {"x-uuencode", "uu"},
      {"UUEncode", "uu"},
      {"html", "html"},
      {"HT", "html"},
      {"ansi", "ansi"},
      {"ASCII", "ansi"},
      {"as", "base64"},
      {"\tansi\r\n", "ansi"},
      {"xyz", "base64"},
      {"", "base64"},
      {"-", "base64"},
  };
  ClsEncode encode;
  XString name;
  encode.get_EncodingMode(name);
  EXPECT_TRUE(name.equalsUtf8("base64"));
  for (const auto& c : cases) {
    encode.put_EncodingMode(XString(c.name));
    encode.get_EncodingMode(name);
    EXPECT_EQ(name.utf8(), c.canonical) << c.name;
  }
}

TEST(ClsEncodeTest, EncodesAndDecodesInEveryMode) {
  const struct {
    const char* name;
    const char* bytes;
    const char* text;
  } cases[] = {
      {"base64", "M\xFF a", "Tf8gYQ=="},
      {"qp", ".a=\xFF", "=2Ea=3D=FF"},
      {"hex", "\n\xFF", "0AFF"},
      {"url", "a b&c", "a+b%26c"},
      {"base32", "foo", "MZXW6==="},
      {"uu", "Cat", "begin 644 file.dat\r\n#0V%T\r\n`\r\nend\r\n"},
      {"ansi", "caf\xE9", "caf\xC3\xA9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(encoded(c.bytes, c.name), c.text) << c.name;
    EXPECT_EQ(decoded(c.text, c.name), c.bytes) << c.name;
  }
}

TEST(ClsEncodeTest, SoftBreaksComeAfter72Characters) {
  EXPECT_EQ(encoded(std::string(100, 'x'), "qp"),
            std::string(72, 'x') + "=\r\n" + std::string(28, 'x'));
}

TEST(ClsEncodeTest, AppendAddsAndOtherwiseTheOutputIsReplaced) {
  XString text("x");
  ASSERT_TRUE(ClsEncode().Encode(dataOf("Ma"), XString("base64"), text, true));
  EXPECT_EQ(text.utf8(), "xTWE=");
  ASSERT_TRUE(ClsEncode().Encode(dataOf("\xE9"), XString("ansi"), text, true));
  EXPECT_EQ(text.utf8(), "xTWE=\xC3\xA9");
  ASSERT_TRUE(ClsEncode().Encode(dataOf("M"), XString("base64"), text, false));
  EXPECT_EQ(text.utf8(), "TQ==");
  ASSERT_TRUE(ClsEncode().Encode(DataBuffer(), XString("base64"), text, false));
  EXPECT_TRUE(text.isEmpty());
  DataBuffer bytes = dataOf("x");
  ASSERT_TRUE(ClsEncode().Decode(XString("4D61"), XString("hex"), bytes, true));
  EXPECT_EQ(bytes.text(), "xMa");
  ASSERT_TRUE(ClsEncode().Decode(XString("4D"), XString("hex"), bytes, false));
  EXPECT_EQ(bytes.text(), "M");
}

TEST(ClsEncodeTest, HtmlLeavesTheTextAloneAndDecodesToNothing) {
  XString text("kept");
  ASSERT_TRUE(ClsEncode().Encode(dataOf("<"), XString("html"), text, false));
  EXPECT_EQ(text.utf8(), "kept");
  DataBuffer bytes = dataOf("x");
  ASSERT_TRUE(ClsEncode().Decode(XString("&lt;"), XString("html"), bytes, true));
  EXPECT_EQ(bytes.text(), "x");
  ASSERT_TRUE(ClsEncode().Decode(XString("&lt;"), XString("html"), bytes, false));
  EXPECT_EQ(bytes.getSize(), 0U);
}

TEST(ClsEncodeTest, FourModesTrimTheTextBeforeDecoding) {
  EXPECT_EQ(decoded("\r\n 4D61 \t", "hex"), "Ma");
  EXPECT_EQ(decoded(" a=20 \r\n", "qp"), "a ");
  EXPECT_EQ(decoded(" a%20 ", "url"), " a  ");
  EXPECT_EQ(decoded(" a ", "ansi"), " a ");
}

TEST(ClsEncodeTest, UuKeepsModeAndNameInBothDirections) {
  ClsEncode encode;
  encode.put_UuMode(XString("755"));
  encode.put_UuFilename(XString("\xC3\xA9.bin"));
  XString text;
  ASSERT_TRUE(encode.Encode(dataOf("Cat"), XString("uu"), text, false));
  EXPECT_TRUE(text.beginsWithUtf8("begin 755 \xC3\xA9.bin\r\n"));
  ClsEncode other;
  DataBuffer bytes;
  ASSERT_TRUE(other.Decode(text, XString("uu"), bytes, false));
  XString mode, name;
  other.get_UuMode(mode);
  other.get_UuFilename(name);
  EXPECT_EQ(bytes.text(), "Cat");
  EXPECT_EQ(mode.utf8(), "755");
  EXPECT_EQ(name.utf8(), "\xC3\xA9.bin");
}

TEST(ClsEncodeTest, EncodeStringReportsTheConversion) {
  ClsEncode encode;
  XString out("x");
  const XString text("\xC3\xA9\xD0\x96");  // e with acute, Cyrillic zhe
  EXPECT_TRUE(encode.EncodeString(text, XString("utf-8"), XString("hex"), out, false));
  EXPECT_EQ(out.utf8(), "C3A9D096");
  EXPECT_FALSE(encode.EncodeString(text, XString("iso-8859-1"), XString("hex"), out, true));
  EXPECT_EQ(out.utf8(), "C3A9D096E93F");
  EXPECT_FALSE(encode.EncodeString(text, XString("no-such-charset"), XString("hex"), out, false));
  EXPECT_TRUE(out.isEmpty());
}

TEST(ClsEncodeTest, DecodeStringAlwaysSucceeds) {
  ClsEncode encode;
  XString out("x");
  EXPECT_TRUE(encode.DecodeString(XString("E9"), XString("iso-8859-1"), XString("hex"), out, true));
  EXPECT_EQ(out.utf8(), "x\xC3\xA9");
  EXPECT_TRUE(
      encode.DecodeString(XString("41004200"), XString("utf-16"), XString("hex"), out, false));
  EXPECT_EQ(out.utf8(), "AB");
  EXPECT_TRUE(
      encode.DecodeString(XString("41"), XString("no-such-charset"), XString("hex"), out, false));
  EXPECT_TRUE(out.isEmpty());
}

TEST(ContentCodingTest, LineLengthIsASetting) {
  ContentCoding coding;
  EXPECT_EQ(coding.maxLineLength(), 72);
  EXPECT_EQ(coding.flags(), 0U);
  coding.setMaxLineLength(4);
  StringBuffer out;
  ASSERT_TRUE(coding.encodeBase64Lines(asBytes("foobar"), out));
  ASSERT_TRUE(coding.encodeQuotedPrintable(asBytes("abcdef"), out));
  EXPECT_EQ(out.view(), "Zm9v\r\nYmFy\r\nabcd=\r\nef");
}

}  // namespace
}  // namespace zantrel::test

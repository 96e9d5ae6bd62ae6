// Encodings and utilities of the component.

#include "crypt2/crypt_fixture.h"

namespace zantrel::test {
namespace {

using namespace std::string_view_literals;

TEST(CryptEncodeTest, TextIsEncodedInACharsetAndDecodedBack) {
  struct Case {
    const char* charset;
    const char* encoding;
    std::string_view encoded;
  };
  const Case cases[] = {
      {"utf-8", "base64", "Z3LDvG4="},         {"windows-1252", "hex", "6772FC6E"},
      {"utf-16le", "hex", "67007200FC006E00"}, {"utf-8", "qp", "gr=C3=BCn"},
      {"iso-8859-1", "url", "gr%FCn"},         {"utf-8", "base32", "M5ZMHPDO"},
  };
  Crypt crypt;
  const XString text("gr\xC3\xBCn");
  for (const Case& row : cases) {
    SCOPED_TRACE(row.encoded);
    const XString charset(row.charset), encoding(row.encoding), encoded(row.encoded);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::EncodeStringX, text, charset, encoding), row.encoded);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::DecodeStringX, encoded, charset, encoding),
              text.utf8());
  }
}

TEST(CryptEncodeTest, ShortFormsAreBase64AndQuotedPrintable) {
  Crypt crypt;
  const XString text("gr\xC3\xBCn"), latin("iso-8859-1");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::Base64EncodeX, text, latin), "Z3L8bg==");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::Base64DecodeX, XString("Z3L8bg=="), latin), text.utf8());
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::QuotedPrintableEncodeX, text, latin), "gr=FCn");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::QuotedPrintableDecodeX, XString("gr=FCn"), latin),
            text.utf8());
}

TEST(CryptEncodeTest, LongTextInBase64HasNoLineBreaks) {
  Crypt crypt;
  const XString text(std::string(300, 'x')), charset("utf-8");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::Base64EncodeX, text, charset).find('\n'),
            std::string::npos);
}

TEST(CryptEncodeTest, ReEncodeChangesTheEncodingAlone) {
  Crypt crypt;
  EXPECT_EQ(
      crypt.textOf(true, &ClsCrypt::ReEncodeX, XString("AP8Q"), XString("base64"), XString("hex")),
      "00FF10");
  EXPECT_EQ(
      crypt.textOf(true, &ClsCrypt::ReEncodeX, XString("AP8Q"), XString("base64"), XString("html")),
      "");
  crypt.expectLogged({"The encoding html encodes nothing"});
}

TEST(CryptEncodeTest, UnknownCharsetsAndLostCharactersFailBytesThatAreNoTextDoNot) {
  Crypt crypt;
  const XString euro("\xE2\x82\xAC"), unknown("no-such"), ascii("us-ascii");
  EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::StringToBytesX, euro, unknown), "");
  crypt.expectLogged({"StringToBytes:", "Unknown charset.", "no-such", "Failed."});
  EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::StringToBytesX, euro, ascii), "");
  crypt.expectLogged({"Character encoding conversion failed.", "Failed."});
  EXPECT_EQ(crypt.textOf(false, &ClsCrypt::Base64EncodeX, euro, ascii), "");
  EXPECT_EQ(crypt.textOf(false, &ClsCrypt::BytesToStringX, bytes("x"), unknown), "");
  crypt.expectLogged({"Unknown charset.", "no-such"});
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::BytesToStringX, bytes("a\xFF"), XString("utf-8")),
            "a\xEF\xBF\xBD");
  crypt.expectLogged({"Some of the bytes are not text in the charset", "Success."});
}

TEST(CryptEncodeTest, BytesAndTextsConvertBothWays) {
  Crypt crypt;
  const XString koi8("koi8-r"), text("\xD0\x96");
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::StringToBytesX, text, koi8), "\xF6");
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::BytesToStringX, bytes("\xF6"), koi8), text.utf8());
  EXPECT_EQ(crypt.textOf(true, &ClsCrypt::BytesToStringX, bytes(text.utf8()), XString("utf-8")),
            text.utf8());
}

TEST(CryptEncodeTest, TrimEndingWithTakesThePaddingOff) {
  struct Case {
    std::string_view text, ending, rest;
  };
  const Case cases[] = {{"data    ", " ", "data"},
                        {"data\0\0\0"sv, "\0"sv, "data"},
                        {"dataabab", "ab", "data"},
                        {"data", "x", "data"},
                        {"data ", "", "data "},
                        {"xxx", "x", ""},
                        {"", " ", ""},
                        {"bab", "ab", "b"}};
  Crypt crypt;
  for (const Case& row : cases)
    EXPECT_EQ(
        crypt.textOf(true, &ClsCrypt::TrimEndingWithX, XString(row.text), XString(row.ending)),
        row.rest);
}

TEST(CryptEncodeTest, FilesAreReadAndWrittenWhole) {
  const TempFolder folder;
  const XString path(folder / "file");
  Crypt crypt;
  EXPECT_TRUE(crypt->WriteFileX(path, bytes("a\0\xFF"sv)));
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::ReadFileX, path), "a\0\xFF"sv);
  EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::ReadFileX, XString(folder / "missing")), "");
  EXPECT_FALSE(crypt->WriteFileX(XString(folder / "no/such/folder"), bytes("x")));
}

}  // namespace
}  // namespace zantrel::test

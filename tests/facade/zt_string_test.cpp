#include <zantrel/zt_string.h>

#include <gtest/gtest.h>

#include "support/test_data.h"

namespace Zantrel {
namespace {

using zantrel::test::TempFolder;

TEST(ZtStringTest, GoesWhereverATextIsWanted) {
  const ZtString name("windows-1252");
  EXPECT_EQ(Text(name).utf8(), "windows-1252");
  const ZtString utf16(u"\u20AC");
  EXPECT_TRUE(utf16.equalsUtf8("\xE2\x82\xAC"));
  EXPECT_EQ(utf16.getUnicode(), Bytes({0xAC, 0x20}));
  EXPECT_EQ(utf16.getAnsi(), Bytes({0x80}));
}

TEST(ZtStringTest, KeepsZeroCharacters) {
  const std::string_view text("a\0b", 3);
  ZtString string{text};
  EXPECT_EQ(string.getUtf8(), text);
  EXPECT_TRUE(string.appendUtf8(text));
  EXPECT_EQ(string.getSizeUtf8(), 6u);
}

TEST(ZtStringTest, TakesItselfAsAnArgument) {
  ZtString string("ab");
  EXPECT_TRUE(string.appendUtf8(string));
  EXPECT_EQ(string.getUtf8(), "abab");
  EXPECT_TRUE(string.setFromUtf8(string));
  EXPECT_EQ(string.getUtf8(), "abab");
  EXPECT_TRUE(string.equalsUtf8(string));
  EXPECT_EQ(string.replaceAllOccurancesUtf8(string, "x"), 1u);
  EXPECT_EQ(string.getUtf8(), "x");
}

TEST(ZtStringTest, AMovedFromObjectIsAnEmptyText) {
  ZtString first("text");
  const ZtString second(std::move(first));
  EXPECT_EQ(second.getUtf8(), "text");
  EXPECT_TRUE(first.isEmpty());
  EXPECT_TRUE(second.beginsWithUtf8("te"));
  EXPECT_EQ(Text(first).size(), 0u);
  EXPECT_TRUE(first.setFromUtf8("again"));
  EXPECT_EQ(first.getUtf8(), "again");
}

TEST(ZtStringTest, WritesAnyBytesAsTextInANamedEncoding) {
  const Bytes bytes{0x00, 0xFF, 0x10, 0x20};
  for (const char* encoding : {"base64", "base32", "hex", "qp", "url", "uu"}) {
    SCOPED_TRACE(encoding);
    ZtString string;
    EXPECT_TRUE(string.setFromBytes(bytes, encoding));
    EXPECT_FALSE(string.isEmpty());
    Bytes back;
    EXPECT_TRUE(string.getBytes(encoding, back));
    EXPECT_EQ(back, bytes);
  }
  ZtString hex;
  hex.setFromBytes(bytes, "hex");
  EXPECT_EQ(hex.getUtf8(), "00FF1020");
}

TEST(ZtStringTest, ReadsAndWritesDates) {
  ZtString string("Tue, 03 Jun 2008 18:05:30 +0200");
  DateTime utc;
  EXPECT_TRUE(string.getSystemTime(utc));
  EXPECT_EQ(utc, (DateTime{2008, 6, 3, 16, 5, 30, 0}));
  EXPECT_TRUE(string.loadSystemTime(utc));
  EXPECT_EQ(string.getUtf8(), "Tue, 03 Jun 2008 16:05:30 +0000");
  string.setFromUtf8("no date");
  EXPECT_FALSE(string.getSystemTime(utc));
  EXPECT_EQ(utc, DateTime{});
  EXPECT_FALSE(string.loadSystemTime(DateTime{2007, 2, 29}));
  EXPECT_FALSE(string.loadSystemTime(DateTime{2008, 6, 3, 24}));
  EXPECT_EQ(string.getUtf8(), "no date");
}

TEST(ZtStringTest, ReadsAndWritesFilesInAnyCharset) {
  const TempFolder folder;
  const ZtString string(u8"gr\u00FCn");
  EXPECT_TRUE(string.writeToFile(folder / "text", "iso-8859-1"));
  EXPECT_EQ(zantrel::test::readFile(folder / "text"), "gr\xFCn");
  ZtString back;
  EXPECT_TRUE(back.readFile(folder / "text", "iso-8859-1"));
  EXPECT_TRUE(back.equalsUtf8(string));
  EXPECT_FALSE(back.readFile(folder / "missing", "utf-8"));
  EXPECT_TRUE(back.isEmpty());
}

}  // namespace
}  // namespace Zantrel

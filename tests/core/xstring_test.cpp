#include "core/xstring.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "core/storage.h"
#include "platform/ansi_code_page.h"

namespace zantrel {
namespace {

using Ansi = XString::AnsiState;

constexpr std::string_view kUtf8 = "sch\xC3\xB6n \xE2\x82\xAC";
constexpr std::string_view kAnsi = "sch\xF6n \x80";
constexpr std::u16string_view kUtf16 = u"sch\u00F6n \u20AC";

/// Sets the ANSI code page for one test.
class ScopedAnsi {
 public:
  explicit ScopedAnsi(int codePage) { setAnsiCodePage(codePage); }
  ~ScopedAnsi() { setAnsiCodePage(0); }
};

/// Which forms are valid, as "u8 a u16".
std::string forms(const XString& text) {
  return std::string(text.isUtf8Valid() ? "u8" : "-") + (text.isAnsiValid() ? " a" : " -") +
         (text.isUnicodeValid() ? " u16" : " -");
}

TEST(XStringTest, NewAndClearedTextsAreEmptyInEveryForm) {
  XString text;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(forms(text), "u8 a u16");
    EXPECT_STREQ(text.getUtf8(), "");
    EXPECT_STREQ(text.getAnsi(), "");
    EXPECT_EQ(*text.getUnicode(), u'\0');
    EXPECT_EQ(text.getNumChars(), 0U);
    text.setFromUtf8("something");
    text.getUnicode();
    text.setFromUtf8("");
  }
}

TEST(XStringTest, EmptyTextsOwnNoUtf16Storage) {
  const XString first;
  const XString second;
  EXPECT_EQ(first.getUnicode(), second.getUnicode());
}

TEST(XStringTest, EveryFormReadsTheSameWhicheverWasSet) {
  const ScopedAnsi ansi(1252);
  for (int set = 0; set < 3; ++set) {
    for (int readFirst = 0; readFirst < 3; ++readFirst) {
      XString text;
      if (set == 0) text.setFromUtf8(kUtf8);
      if (set == 1) text.setFromAnsi(kAnsi);
      if (set == 2) text.setFromUnicode2(kUtf16);
      if (readFirst == 0) text.getUtf8();
      if (readFirst == 1) text.getAnsi();
      if (readFirst == 2) text.getUnicode();
      EXPECT_EQ(text.utf8(), kUtf8);
      EXPECT_EQ(text.ansi(), kAnsi);
      EXPECT_EQ(text.unicode(), kUtf16);
      EXPECT_EQ(text.getUnicode()[kUtf16.size()], u'\0');
      EXPECT_EQ(text.getSizeUtf8(), 10U);
      EXPECT_EQ(text.getSizeAnsi(), 7U);
      EXPECT_EQ(text.getSizeUnicode(), 14U);
      EXPECT_EQ(text.ansiState(), Ansi::Faithful);
    }
  }
}

TEST(XStringTest, KeepsConvertedFormsUntilTheTextChanges) {
  const ScopedAnsi ansi(1252);
  XString text;
  text.setFromAnsi(kAnsi);
  EXPECT_EQ(forms(text), "- a -");
  text.getUtf8();
  EXPECT_EQ(forms(text), "u8 a -");
  EXPECT_EQ(text.ansiState(), Ansi::Faithful);
  text.getUnicode();
  EXPECT_EQ(forms(text), "u8 a u16");
  text.appendUtf8("!");
  EXPECT_EQ(forms(text), "u8 - -");
  EXPECT_EQ(text.ansiState(), Ansi::Unknown);
}

TEST(XStringTest, AMarkAtTheStartOutlivesFormsThatLackIt) {
  const std::string marked = "\xEF\xBB\xBFtext";
  for (const bool ansiToo : {false, true}) {
    XString text{std::string_view(marked)};
    EXPECT_EQ(text.unicode(), u"text");
    if (ansiToo) {
      EXPECT_EQ(text.ansi(), "text");
    }
    ASSERT_TRUE(text.base64Encode(nullptr));
    ASSERT_TRUE(text.base64Decode(nullptr));
    EXPECT_EQ(text.utf8(), marked);
  }
  XString text{std::string_view(marked)};
  ASSERT_EQ(text.ansi(), "text");
  ASSERT_TRUE(text.appendFromEncoding(asBytes("!"), "ansi"));
  EXPECT_EQ(text.utf8(), marked + "!");
}

TEST(XStringTest, ALossyAnsiFormIsNeverTheSourceOfAnother) {
  const ScopedAnsi ansi(1252);
  XString text;
  text.setFromUnicode2(u"\u65E5\u672C");
  EXPECT_STREQ(text.getAnsi(), "??");
  EXPECT_EQ(text.ansiState(), Ansi::Lossy);
  EXPECT_EQ(text.utf8(), "\xE6\x97\xA5\xE6\x9C\xAC");

  XString other(text.utf8());
  other.getAnsi();
  EXPECT_EQ(other.unicode(), u"\u65E5\u672C");
  other.minimizeMemory();
  EXPECT_EQ(other.unicode(), u"\u65E5\u672C");

  XString appended(text);
  appended.getAnsi();
  appended.appendFromEncoding(asBytes("\xE4"), "ansi");
  EXPECT_EQ(appended.utf8(), "\xE6\x97\xA5\xE6\x9C\xAC\xC3\xA4");
}

TEST(XStringTest, ReadingInvalidUtf8AsUtf16LosesNothingOfIt) {
  XString text("a\xFF");
  EXPECT_EQ(text.unicode(), u"a\uFFFD");
  DataBuffer out;
  EXPECT_TRUE(text.getConverted("utf-8", out));
  EXPECT_EQ(out.text(), "a\xFF");
}

TEST(XStringTest, CountsAnsiBytesDeliberatelyWhenTheAnsiFormIsValid) {
  const ScopedAnsi ansi(932);
  XString text;
  text.setFromUnicode2(u"\u65E5\u672C");
  EXPECT_EQ(text.getNumChars(), 2U);
  text.getAnsi();
  EXPECT_EQ(text.getNumChars(), 4U);
  text.setFromUtf8("\xF0\x9F\x98\x80");
  EXPECT_EQ(text.getNumChars(), 2U);
}

TEST(XStringTest, SetsFromItsOwnForms) {
  const ScopedAnsi ansi(1252);
  XString text(kUtf8);
  text.getUnicode();
  text.getAnsi();
  text.setFromUnicode2(text.getUnicode() + 3);
  EXPECT_EQ(text.utf8(), kUtf8.substr(3));
  text.setFromAnsi(text.getAnsi() + 1);
  EXPECT_EQ(text.utf8(), kUtf8.substr(5));
  text.setFromUtf8(text.getUtf8() + 1);
  EXPECT_EQ(text.utf8(), " \xE2\x82\xAC");
  text.append(text);
  EXPECT_EQ(text.unicode(), u" \u20AC \u20AC");
  text.setFromUtf8("a b a");
  text.replaceAllOccurancesUtf8(text.ansi().substr(0, 1), text.ansi().substr(2, 1));
  EXPECT_EQ(text.utf8(), "b b b");
}

TEST(XStringTest, KeepsZeroCharactersInside) {
  XString text(std::string_view("a\0b", 3));
  EXPECT_EQ(text.unicode(), std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(text.getSizeAnsi(), 3U);
}

TEST(XStringTest, ConversionLeavesOutAByteOrderMarkAtTheStart) {
  const XString text("\xEF\xBB\xBFx");
  EXPECT_EQ(text.unicode(), u"x");
  EXPECT_EQ(text.getSizeUtf8(), 4U);
}

TEST(XStringTest, AppendsBytesInACharset) {
  const ScopedAnsi ansi(1252);
  struct Case {
    const char* bytes;
    const char* charset;
    bool result;
    const char* expected;
    const char* valid;
  };
  const Case cases[] = {
      {"\xC3\xA4", nullptr, true, "x\xC3\xA4", "u8 - -"},
      {"\xC3\xA4", "  ", true, "x\xC3\xA4", "u8 - -"},
      {"\xC3\xA4", "UTF-8", true, "x\xC3\xA4", "u8 - -"},
      {"\xE4", "ansi", true, "x\xC3\xA4", "- a -"},
      {"\xE4", "iso-8859-1", true, "x\xC3\xA4", "u8 - -"},
      {"\x93\xFA", "Shift_JIS", true, "x\xE6\x97\xA5", "u8 - -"},
      {"\xFF", "us-ascii", false, "x\xEF\xBF\xBD", "u8 - -"},
      {"a", "no-such-charset", false, "x", "u8 - -"},
  };
  for (const Case& c : cases) {
    XString text("x");
    EXPECT_EQ(text.appendFromEncoding(asBytes(c.bytes), c.charset), c.result) << c.bytes;
    EXPECT_EQ(forms(text), c.valid) << c.bytes;
    EXPECT_EQ(text.utf8(), c.expected);
  }
}

TEST(XStringTest, ConvertsToACharset) {
  XString text(kUtf8);
  DataBuffer out;
  for (int round = 0; round < 2; ++round) {  // from UTF-8, then from UTF-16
    EXPECT_TRUE(text.getConverted("windows-1252", out));
    EXPECT_EQ(out.text(), kAnsi);
    EXPECT_TRUE(text.getConverted(nullptr, out));
    EXPECT_EQ(out.text(), kUtf8);
    EXPECT_TRUE(text.getConverted("utf-16", out));
    EXPECT_EQ(out.getSize(), 14U);
    EXPECT_FALSE(text.getConverted("us-ascii", out));
    EXPECT_EQ(out.text(), "sch?n ?");
    EXPECT_FALSE(text.getConverted("no-such-charset", out));
    EXPECT_EQ(out.getSize(), 0U);
    text.setFromUnicode2(kUtf16);
  }
  EXPECT_TRUE(XString().getConverted("us-ascii", out));
}

TEST(XStringTest, SecureClearLeavesAnEmptyText) {
  XString text("secret");
  text.getUnicode();
  text.secureClear();
  EXPECT_EQ(forms(text), "u8 a u16");
  EXPECT_STREQ(text.getUtf8(), "");
  EXPECT_EQ(*text.getUnicode(), u'\0');
}

TEST(XStringTest, WipeOverwritesEveryFormToItsFullStorage) {
  const ScopedAnsi ansi(1252);
  XString text("a secret");
  text.getAnsi();
  text.shortenNumChars(4);  // leaves the rest of the secret behind the end of the text
  const char* const block = text.getUtf8();
  text.wipe();
  ASSERT_EQ(text.getUtf8(), block);
  EXPECT_EQ(std::string(block, 8), std::string(8, '\0'));
  EXPECT_EQ(forms(text), "u8 a u16");
}

TEST(XStringTest, KeepsOneFormWhenMemoryIsMinimized) {
  const ScopedAnsi ansi(1252);
  XString text;
  text.setFromAnsi(kAnsi);
  text.getUnicode();
  text.minimizeMemory();
  EXPECT_EQ(forms(text), "- a -");
  text.getUtf8();
  text.minimizeMemory();
  EXPECT_EQ(forms(text), "u8 - -");
  EXPECT_EQ(text.utf8(), kUtf8);
  EXPECT_EQ(text.getUtf8Sb().capacity(), 11);
}

TEST(XStringTest, CopiesAndMovesAllForms) {
  const ScopedAnsi ansi(1252);
  XString text(kUtf8);
  text.getAnsi();
  const XString copy(text);
  EXPECT_EQ(forms(copy), "u8 a -");
  XString moved(std::move(text));
  EXPECT_EQ(moved.utf8(), kUtf8);
  EXPECT_EQ(forms(text), "u8 a u16");  // NOLINT: a text moved from is an empty one
  text.setFromUtf8("again");
  moved = std::move(text);
  EXPECT_EQ(moved.utf8(), "again");
  moved = copy;
  EXPECT_EQ(moved.unicode(), kUtf16);
}

TEST(XStringTest, LosesNothingWhenAConversionFindsNoStorage) {
  const std::string longText(5000, 'x');
  for (std::size_t successes = 0; successes < 6; ++successes) {
    XString text;
    text.setFromUnicode2(std::u16string(5000, u'x'));
    {
      const storage::ScopedAllocationFault fault(successes);
      text.getUtf8();
      text.getAnsi();
      text.appendUtf8("");
      text.trim2();
    }
    EXPECT_EQ(text.utf8(), longText) << successes;
  }
}

TEST(XStringTest, AnEmptyTextTakesTheFirstBlocksOfItsByteFormsOnly) {
  const storage::ScopedAllocationFault fault(3);
  const XString text;
  EXPECT_EQ(*text.getUnicode(), u'\0');
  EXPECT_EQ(text.getUtf8Sb().capacity(), 202);
  EXPECT_EQ(StringBuffer().capacity(), 202);  // the third allocation
  EXPECT_EQ(StringBuffer().capacity(), 0);
}

}  // namespace
}  // namespace zantrel

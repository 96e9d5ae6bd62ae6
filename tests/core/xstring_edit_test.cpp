#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "core/xstring.h"

namespace zantrel {
namespace {

struct EditCase {
  const char* before;
  void (*edit)(XString&);
  const char* after;
};

TEST(XStringEditTest, EditsInTheUtf8Form) {
  const EditCase cases[] = {
      {" \t a b\r\n", [](XString& s) { s.trim2(); }, "a b"},
      {"a\rb\nc\r\n", [](XString& s) { s.toCRLF(); }, "ab\r\nc\r\n"},
      {"a\r\nb", [](XString& s) { s.toLF(); }, "a\nb"},
      {"\xC3\x84\xCE\xA3\xC3\x9F\xC3\x97", [](XString& s) { s.toLowerCase(); },
       "\xC3\xA4\xCF\x83\xC3\x9F\xC3\x97"},
      {"stra\xC3\x9F"
       "e \xC8\xBF\xFF",
       [](XString& s) { s.toUpperCase(); },
       "STRA\xC3\x9F"
       "E \xE2\xB1\xBE\xFF"},
      {"aXbX", [](XString& s) { s.replaceAllOccurancesUtf8("X", "\xC3\xA4"); },
       "a\xC3\xA4"
       "b\xC3\xA4"},
      {"aXbX", [](XString& s) { s.replaceFirstOccuranceUtf8("X", ""); }, "abX"},
      {"a\xE2\x82\xAC"
       "b",
       [](XString& s) { s.replaceChar(0x20AC, 'E'); }, "aEb"},
      {"a\xC3\xA4"
       "b\xC3\xA4",
       [](XString& s) { s.removeCharOccurances(0xE4); }, "ab"},
      {"user@host@x", [](XString& s) { s.chopAtFirstChar('@'); }, "user"},
      {"\xC3\xA4\xE2\x82\xAC"
       "b",
       [](XString& s) { s.shortenNumChars(2); }, "\xC3\xA4"},
      {"a\xF0\x9F\x98\x80", [](XString& s) { s.shortenNumChars(1); }, "a"},
      {"a\x80\x80\x80\x80", [](XString& s) { s.shortenNumChars(2); }, "a\x80\x80"},
      {"ab", [](XString& s) { s.shortenNumChars(9); }, ""},
      {"b", [](XString& s) { s.prependUtf8("a"); }, "ab"},
      {"n", [](XString& s) { s.appendInt(-5); }, "n-5"},
  };
  for (const EditCase& c : cases) {
    XString text(c.before);
    text.getUnicode();
    c.edit(text);
    EXPECT_EQ(text.utf8(), c.after) << c.before;
    EXPECT_FALSE(text.isUnicodeValid()) << c.before;
  }
}

TEST(XStringEditTest, LeavesOtherFormsAloneWhenNothingIsToBeCut) {
  XString text("abc");
  text.getUnicode();
  EXPECT_FALSE(text.chopAtFirstChar('@'));
  EXPECT_TRUE(text.isUnicodeValid());
}

TEST(XStringEditTest, ComparesWithoutCaseByUnicode) {
  const XString text("\xC3\x84pfel \xCE\xA3\xCF\x82");  // final sigma
  EXPECT_TRUE(text.equalsIgnoreCaseUtf8("\xC3\xA4PFEL \xCF\x83\xCF\x83"));
  EXPECT_FALSE(text.equalsIgnoreCaseUtf8("\xC3\xA4PFEL \xCF\x83"));
  EXPECT_TRUE(text.containsSubstringNoCaseUtf8("\xC3\xA4P"));
  EXPECT_FALSE(text.containsSubstringUtf8("\xC3\xA4P"));
  EXPECT_TRUE(text.beginsWithUtf8("\xC3\x84pf"));
  EXPECT_FALSE(text.containsSubstringUtf8(""));
  EXPECT_FALSE(XString("\xC4\xB1").equalsIgnoreCaseUtf8("i"));  // dotless i
  EXPECT_FALSE(XString("ss").equalsIgnoreCaseUtf8("\xC3\x9F"));
  EXPECT_FALSE(XString("\xFF").equalsIgnoreCaseUtf8("\xFE"));
}

TEST(XStringEditTest, ReadsNumbersWhateverTheLocale) {
  const std::pair<const char*, std::int32_t> integers[] = {
      {" \t42x", 42},
      {"-7", -7},
      {"+7", 7},
      {"+-7", 0},
      {"", 0},
      {"x", 0},
      {"-", 0},
      {"2147483648", 2147483647},
      {"-99999999999999999999", -2147483647 - 1},
  };
  for (const auto& [text, value] : integers) EXPECT_EQ(XString(text).intValue(), value) << text;

  const double infinity = std::numeric_limits<double>::infinity();
  const std::pair<const char*, double> numbers[] = {
      {" 1.5e3 ", 1500},
      {"-.25", -0.25},
      {"+2,5", 2},
      {"nan", 0},
      {"inf", 0},
      {"1e999", infinity},
      {"-1e999", -infinity},
      {"1e-999", 0},
      {"0.0001e400", infinity},
      {"--1", 0},
      {"5.", 5},
      {"0x10", 0},
  };
  for (const auto& [text, value] : numbers) EXPECT_EQ(XString(text).doubleValue(), value) << text;
}

TEST(XStringEditTest, ReadsAndWritesDates) {
  SystemTime time;
  ASSERT_TRUE(XString("Tue, 3 Jun 2008 11:05:30 -0700").getSystemTime(time));
  EXPECT_EQ(time.hour, 18);
  XString text;
  text.loadSystemTime(time);
  EXPECT_STREQ(text.getUtf8(), "Tue, 03 Jun 2008 18:05:30 +0000");
  EXPECT_FALSE(XString("yesterday").getSystemTime(time));
}

}  // namespace
}  // namespace zantrel

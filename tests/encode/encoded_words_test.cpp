#include "core/encode/encoded_words.h"

#include <gtest/gtest.h>

#include <string>

#include "core/string_buffer.h"
#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

std::string encoded(std::string_view text, std::string_view charset, WordCoding coding) {
  RecordedLog log;
  StringBuffer out;
  return encodeWords(text, charset, coding, out, log) ? std::string(out.view()) : log.text();
}

std::string decoded(std::string_view text) {
  RecordedLog log;
  StringBuffer out;
  EXPECT_TRUE(decodeWords(text, out, log));
  return std::string(out.view()) + log.text();
}

TEST(EncodedWordsTest, TextBecomesWords) {
  struct {
    std::string_view text, charset, q, b;
  } const cases[] = {
      {"", "utf-8", "", ""},
      {"abc d", "us-ascii", "=?us-ascii?Q?abc_d?=", "=?us-ascii?B?YWJjIGQ=?="},
      {"\uFEFFa", "utf-8", "=?utf-8?Q?=EF=BB=BFa?=", "=?utf-8?B?77u/YQ==?="},
      {"\uFEFFa", "gb18030", "=?gb18030?Q?=841=953a?=", "=?gb18030?B?hDGVM2E=?="},
      {"ä?=_", "utf-8", "=?utf-8?Q?=C3=A4=3F=3D=5F?=", "=?utf-8?B?w6Q/PV8=?="},
      {"ä", "ISO-8859-1", "=?iso-8859-1?Q?=E4?=", "=?iso-8859-1?B?5A==?="},
      {"日", "iso-2022-jp",
       "=?iso-2022-jp?Q?=1B=24BF=7C=1B=28B?=", "=?iso-2022-jp?B?GyRCRnwbKEI=?="},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(encoded(one.text, one.charset, WordCoding::Q), one.q);
    EXPECT_EQ(encoded(one.text, one.charset, WordCoding::B), one.b);
  }
  EXPECT_EQ(encoded("€", "iso-8859-1", WordCoding::Q),
            "error: The charset lacks a character of the text, or the text is not UTF-8.\n"
            "Charset: iso-8859-1\n");
  EXPECT_EQ(encoded("\xFF", "utf-8", WordCoding::Q),
            "error: The charset lacks a character of the text, or the text is not UTF-8.\n"
            "Charset: utf-8\n");
  EXPECT_EQ(encoded("a", "nonsense", WordCoding::B),
            "error: Unknown charset.\nCharset: nonsense\n");
}

// The examples of RFC 2047, section 8, and what else is met.
TEST(EncodedWordsTest, WordsBecomeText) {
  struct {
    std::string_view text, decoded;
  } const cases[] = {
      {"(=?ISO-8859-1?Q?a?=)", "(a)"},
      {"(=?ISO-8859-1?Q?a?= b)", "(a b)"},
      {"(=?ISO-8859-1?Q?a?= =?ISO-8859-1?Q?b?=)", "(ab)"},
      {"(=?ISO-8859-1?Q?a?=  =?ISO-8859-1?Q?b?=)", "(ab)"},
      {"(=?ISO-8859-1?Q?a?=\r\n    =?ISO-8859-1?Q?b?=)", "(ab)"},
      {"(=?ISO-8859-1?Q?a_b?=)", "(a b)"},
      {"(=?ISO-8859-1?Q?a?= =?ISO-8859-2?Q?_b?=)", "(a b)"},
      {"=?US-ASCII?Q?Keith_Moore?= <moore@example>", "Keith Moore <moore@example>"},
      {"=?ISO-8859-1?Q?Andr=E9?= Pirard", "André Pirard"},
      {"=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?=\r\n "
       "=?ISO-8859-2?B?dSB1bmRlcnN0YW5kIHRoZSBleGFtcGxlLg==?=",
       "If you can read this you understand the example."},
      {"=?utf-8*de?q?=c3=a4?=", "ä"},
      {"=?utf-8?Q?=C3?= =?utf-8?B?pA==?=", "ä"},  // a character in two words
      {"=?utf-8?Q?a=b?=", "a=b"},
      {"=?utf-8?Q?a", "=?utf-8?Q?a"},
      {"=?utf-8?Q?a?", "=?utf-8?Q?a?"},
      {"=?utf-8?X?a?=", "=?utf-8?X?a?="},
      {"=?=?utf-8?Q?a?=", "=?a"},
      {"=?", "=?"},
      {"plain", "plain"},
      {"", ""},
      {"=?none-such?Q?a?= =?utf-8?Q?b?=",
       "=?none-such?Q?a?= binfo: An encoded word in an unknown charset stays as it is.\n"
       "Charset: none-such\n"},
      {"=?utf-8?Q?=FF?=",
       "\xEF\xBF\xBDinfo: Some of the bytes are not text in the charset: U+FFFD stands for them.\n"
       "Charset: 65001\n"},
  };
  for (const auto& one : cases) EXPECT_EQ(decoded(one.text), one.decoded) << one.text;
}

TEST(EncodedWordsTest, LongTextsBecomeWordsOf75Characters) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += i % 3 == 0 ? "日本" : i % 3 == 1 ? "abcdefg " : "語?";
  for (const char* charset : {"utf-8", "iso-2022-jp", "shift_jis", "euc-jp", "utf-7", "utf-16"}) {
    for (const WordCoding coding : {WordCoding::Q, WordCoding::B}) {
      const std::string words = encoded(text, charset, coding);
      for (std::size_t at = 0, end = 0; at < words.size(); at = end + 1) {
        end = std::min(words.find(' ', at), words.size());
        EXPECT_LE(end - at, 75U) << charset;
        if (end != words.size()) {
          EXPECT_GT(end - at, 50U) << charset << words.substr(at, end - at);
        }
        const std::string one = decoded(words.substr(at, end - at));
        EXPECT_NE(text.find(one), text.npos) << charset << one;
      }
      EXPECT_EQ(decoded(words), text) << charset;
    }
  }
}

TEST(EncodedWordsTest, ManyBeginningsTakeLinearTime) {
  std::string text;
  for (int i = 0; i < 1000000; ++i) text += "=?a?Q?";
  EXPECT_EQ(decoded(text), text);
}

}  // namespace
}  // namespace zantrel::test

#include "core/charset/mac_arabic.h"

#include <gtest/gtest.h>

#include "charset/conversion.h"

namespace zantrel::test {
namespace {

// C7 E4 are the letters alef and lam, A0 is the right-to-left space.
TEST(MacArabicTest, RunsAreReversedToLogicalOrder) {
  EXPECT_EQ(convert(10004, 65001, "ab \xE4\xC7 cd").bytes, "ab \xD8\xA7\xD9\x84 cd");
  EXPECT_EQ(convert(10004, 65001, "\xE4\xA0\xC7\n\xC7").bytes, "\xD8\xA7 \xD9\x84\n\xD8\xA7");
}

TEST(MacArabicTest, DigitsBecomeAsciiDigits) {
  EXPECT_EQ(convert(10004, 65001, "\xB2\xB1\xB0").bytes, "012");
  EXPECT_EQ(convert(10004, 65001, "x\xB9y").bytes, "x9y");
}

TEST(MacArabicTest, TwinsOfAsciiBecomeAsciiAndArabicPunctuationStays) {
  const char twins[] =
      "\xA0\xA1\xA2\xA3\xA4\xA6\xA7\xA8\xA9\xAA\xAB\xAD\xAE\xAF\xBA\xBC\xBD\xBE\xDB\xDC\xDD\xDE"
      "\xDF\xFB\xFC\xFD";
  EXPECT_EQ(convert(10004, 65001, twins).bytes, "}|{_^]\\[>=<:/.-+*)('&$#\"! ");
  EXPECT_EQ(convert(10004, 65001, "\xA5\xAC").bytes, "\xD8\x8C\xD9\xAA");
}

TEST(MacArabicTest, TheCallersBytesAreNotChangedAndPiecesDoNotMatter) {
  const std::string text = "one \xE4\xC7\xA0\xB1\xB2 two \x81\xE4";
  const std::string copy = text;
  const std::string whole = convert(10004, 65001, text).bytes;
  EXPECT_EQ(text, copy);
  for (std::size_t piece = 1; piece < 12; ++piece)
    EXPECT_EQ(convertInPieces(10004, 65001, text, piece).bytes, whole);
}

TEST(MacArabicTest, ARunOfAnyLengthNeedsBoundedMemory) {
  const std::string run(3 * MacArabicRewriter::kLongestRun / 2, '\xC7');
  EXPECT_EQ(convert(10004, 65001, run).bytes.size(), 2 * run.size());
}

}  // namespace
}  // namespace zantrel::test

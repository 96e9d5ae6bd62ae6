#include <zantrel/types.h>

#include <gtest/gtest.h>

#include "facade/arguments.h"

namespace zantrel::facade {
namespace {

using Zantrel::Text;

std::string utf8Of(const Text& text) {
  XString string;
  assignText(string, text);
  return std::string(string.utf8());
}

TEST(TextTest, NullPointersAreTheEmptyText) {
  EXPECT_EQ(utf8Of(nullptr), "");
  EXPECT_EQ(utf8Of(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(utf8Of(static_cast<const char8_t*>(nullptr)), "");
  EXPECT_EQ(utf8Of(static_cast<const char16_t*>(nullptr)), "");
  EXPECT_EQ(utf8Of(Text()), "");
  EXPECT_EQ(utf8Of(std::string_view()), "");
}

TEST(TextTest, EveryKindOfStringIsTheSameText) {
  const std::string expected = "\xC3\xA4\xF0\x9F\x98\x80";
  EXPECT_EQ(utf8Of("\xC3\xA4\xF0\x9F\x98\x80"), expected);
  EXPECT_EQ(utf8Of(expected), expected);
  EXPECT_EQ(utf8Of(u8"\u00E4\U0001F600"), expected);
  EXPECT_EQ(utf8Of(std::u8string(u8"\u00E4\U0001F600")), expected);
  EXPECT_EQ(utf8Of(u"\u00E4\U0001F600"), expected);
  EXPECT_EQ(utf8Of(std::u16string(u"\u00E4\U0001F600")), expected);
}

TEST(TextTest, TheSizeInUtf8IsNeverUnderestimated) {
  EXPECT_EQ(utf8Size(Text("abc")), 3u);
  for (const char16_t* text : {u"abc", u"\u00E4", u"\u20AC", u"\U0001F600"}) {
    EXPECT_GE(utf8Size(Text(text)), utf8Of(text).size());
  }
}

}  // namespace
}  // namespace zantrel::facade

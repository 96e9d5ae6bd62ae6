#include "core/encode/html_entities.h"

#include <gtest/gtest.h>

#include <string>

#include "core/encode/html_entity_table.h"
#include "core/string_buffer.h"

namespace zantrel::test {
namespace {

using Function = bool (*)(std::string_view, StringBuffer&);

std::string resultOf(Function function, std::string_view in) {
  StringBuffer out;
  EXPECT_TRUE(function(in, out));
  return std::string(out.view());
}

std::string decoded(std::string_view in) {
  return resultOf(htmlEntityDecode, in);
}

TEST(HtmlEntitiesTest, ResolvesReferencesAsHtmlDoes) {
  const struct {
    std::string_view in, out;
  } cases[] = {
      {"a &lt; b &amp;&amp; c", "a < b && c"},
      {"&eacute;&Eacute;", "\xC3\xA9\xC3\x89"},
      {"&euro;&CounterClockwiseContourIntegral;", "\xE2\x82\xAC\xE2\x88\xB3"},
      {"&NotEqualTilde;", "\xE2\x89\x82\xCC\xB8"},
      {"&#233;&#xE9;&#Xe9;", "\xC3\xA9\xC3\xA9\xC3\xA9"},
      {"&#128512;&#x1F600;", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80"},
      {"&copy2026 &notit; &notin;",
       "\xC2\xA9"
       "2026 \xC2\xAC"
       "it; \xE2\x88\x89"},
      {"&#65B&#x41Z", "ABAZ"},
      {"&#128;&#x99;&#129;", "\xE2\x82\xAC\xE2\x84\xA2\xC2\x81"},
      {"&#0;&#xD800;&#x110000;&#99999999999999999999;",
       "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"& &; &# &#; &#x; &#xg; &euro &unknown; &", "& &; &# &#; &#x; &#xg; &euro &unknown; &"},
      {"&amp;lt;", "&lt;"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(decoded(c.in), c.out);
}

TEST(HtmlEntitiesTest, KnowsEveryNameOfItsTable) {
  ASSERT_GT(kHtmlEntityCount, 2000U);
  for (std::size_t i = 0; i < kHtmlEntityCount; ++i) {
    const std::string name(htmlEntityName(kHtmlEntities[i]));
    const std::string number = "&#" + std::to_string(kHtmlEntities[i].first) + ";";
    const std::string second =
        kHtmlEntities[i].second == 0 ? "" : "&#" + std::to_string(kHtmlEntities[i].second) + ";";
    EXPECT_EQ(decoded("&" + name + ";"), decoded(number + second)) << name;
    if (kHtmlEntities[i].legacy != 0) {
      EXPECT_EQ(decoded("&" + name + " "), decoded(number + " "));
    }
    if (i > 0) {
      EXPECT_LT(htmlEntityName(kHtmlEntities[i - 1]), name);
    }
  }
}

TEST(HtmlEntitiesTest, TheResultFitsItsReservation) {
  std::string in;
  for (int i = 0; i < 200; ++i) in += "&nGt;";
  EXPECT_EQ(decoded(in).size(), 1200U);
}

TEST(HtmlEntitiesTest, EncodesCharactersBeyondAscii) {
  EXPECT_EQ(resultOf(entityEncodeHex, "a<\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"),
            "a<&#xE9;&#x20AC;&#x1F600;");
  EXPECT_EQ(resultOf(entityEncodeDec, "a<\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"),
            "a<&#233;&#8364;&#128512;");
}

TEST(HtmlEntitiesTest, MalformedUtf8BecomesTheReplacementCharacter) {
  EXPECT_EQ(resultOf(entityEncodeDec, "\xC3z\xFF\xED\xA0\x80"),
            "&#65533;z&#65533;&#65533;&#65533;&#65533;");
  EXPECT_EQ(resultOf(entityEncodeDec, "\xF0\x9F\x98"), "&#65533;&#65533;&#65533;");
  EXPECT_EQ(resultOf(entityEncodeHex, std::string(50, '\x80')).size(), 50U * 8);
}

TEST(HtmlEntitiesTest, XmlSpecialsGoThereAndBack) {
  EXPECT_EQ(resultOf(xmlSpecialEncode, "<a b=\"c\" d='e'>&"),
            "&lt;a b=&quot;c&quot; d=&apos;e&apos;&gt;&amp;");
  EXPECT_EQ(resultOf(xmlSpecialDecode, "&lt;a b=&quot;c&quot; d=&apos;e&apos;&gt;&amp;"),
            "<a b=\"c\" d='e'>&");
  EXPECT_EQ(resultOf(xmlSpecialDecode, "&amp;lt; &eacute; &#65; &lt &"),
            "&lt; &eacute; &#65; &lt &");
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/auto_link.h"
#include "core/xstring.h"

namespace zantrel {
namespace {

TEST(XStringEncodeTest, EncodesInPlaceAndBack) {
  struct Case {
    bool (XString::*encode)(const char*);
    bool (XString::*decode)(const char*);
    const char* encoded;
  };
  const Case cases[] = {
      {&XString::base64Encode, &XString::base64Decode, "5Pw="},
      {&XString::qpEncode, &XString::qpDecode, "=E4=FC"},
      {&XString::hexEncode, &XString::hexDecode, "E4FC"},
  };
  for (const Case& c : cases) {
    XString text("\xC3\xA4\xC3\xBC");
    EXPECT_TRUE((text.*c.encode)("iso-8859-1"));
    EXPECT_EQ(text.utf8(), c.encoded);
    text.prependUtf8(" \r\n");
    EXPECT_TRUE((text.*c.decode)("iso-8859-1"));
    EXPECT_EQ(text.utf8(), "\xC3\xA4\xC3\xBC");
    EXPECT_FALSE((text.*c.encode)("no-such-charset"));
    EXPECT_FALSE((text.*c.decode)("no-such-charset"));
    EXPECT_EQ(text.utf8(), "\xC3\xA4\xC3\xBC");
  }
}

TEST(XStringEncodeTest, EncodesWhatACharsetLacksAsItsSubstitute) {
  XString text("\xE2\x82\xAC");
  EXPECT_FALSE(text.hexEncode("iso-8859-1"));
  EXPECT_EQ(text.utf8(), "3F");
}

TEST(XStringEncodeTest, DecodesUrlsWithoutTrimming) {
  XString text(" a+%C3%A4 ");
  EXPECT_TRUE(text.urlDecode(nullptr));
  EXPECT_EQ(text.utf8(), " a \xC3\xA4 ");
}

TEST(XStringEncodeTest, WritesAndReadsEntities) {
  XString text("<a & \"\xC3\xA4\">");
  text.encodeXMLSpecial();
  EXPECT_EQ(text.utf8(), "&lt;a &amp; &quot;\xC3\xA4&quot;&gt;");
  text.entityEncode_A();
  EXPECT_EQ(text.utf8(), "&lt;a &amp; &quot;&#228;&quot;&gt;");
  XString other(text);
  text.entityDecode_A();
  EXPECT_EQ(text.utf8(), "<a & \"\xC3\xA4\">");
  other.decodeXMLSpecial();
  EXPECT_EQ(other.utf8(), "<a & \"&#228;\">");
}

TEST(XStringEncodeTest, ScramblesAndUnscrambles) {
  std::set<std::string> seen;
  for (const std::string password :
       {"secret", "\xC3\xA4", "a much longer secret, longer than a block"}) {
    for (int i = 0; i < 2; ++i) {
      XString text(password);
      text.getUnicode();
      ASSERT_TRUE(text.obfus());
      EXPECT_EQ(text.utf8().find(password), std::string::npos);
      EXPECT_TRUE(seen.insert(text.getUtf8()).second) << "equal texts must not look alike";
      ASSERT_TRUE(text.unobfus());
      EXPECT_EQ(text.utf8(), password);
    }
  }
  XString empty;
  EXPECT_TRUE(empty.obfus() && empty.unobfus() && empty.isEmpty());
}

TEST(XStringEncodeTest, UnscramblesOnlyWhatItScrambled) {
  XString changed("secret");
  changed.obfus();
  changed.replaceChar(static_cast<char32_t>(*changed.getUtf8()), '0' + (*changed.getUtf8() == '0'));
  for (const std::string text :
       {"secret", "ABCD", "000000000000000000000000AA", changed.getUtf8()}) {
    XString value(text);
    EXPECT_FALSE(value.unobfus()) << text;
    EXPECT_EQ(value.utf8(), text);
  }
}

TEST(AutoLinkTest, LinksWhatIsAUrlAndNothingElse) {
  const std::pair<const char*, const char*> cases[] = {
      {"see http://a.org/x?y=1&z=2.",
       "see <a href=\"http://a.org/x?y=1&z=2\">http://a.org/x?y=1&z=2</a>."},
      {"(WWW.a.org)", "(<a href=\"http://WWW.a.org\">WWW.a.org</a>)"},
      {"http://a.org/w_(x))", "<a href=\"http://a.org/w_(x)\">http://a.org/w_(x)</a>)"},
      {"mailto:a@b.c, ftp://h/f!",
       "<a href=\"mailto:a@b.c\">mailto:a@b.c</a>, <a href=\"ftp://h/f\">ftp://h/f</a>!"},
      {"&lt;https://a.org&gt;", "&lt;<a href=\"https://a.org\">https://a.org</a>&gt;"},
      {"http:// and www. and xhttp://a", "http:// and www. and xhttp://a"},
      {"<img src=\"http://a.org\">", "<img src=\"http://a.org\">"},
      {"<a href='http://a'>http://a</a>", "<a href='http://a'>http://a</a>"},
      {"<!-- http://a --><abbr>www.b</abbr>",
       "<!-- http://a --><abbr><a href=\"http://www.b\">www.b</a></abbr>"},
      {"1 < 2 www.b", "1 < 2 <a href=\"http://www.b\">www.b</a>"},
      {"<a unclosed www.b", "<a unclosed <a href=\"http://www.b\">www.b</a>"},
      {"\"http://a\"onclick=x", "\"<a href=\"http://a\">http://a</a>\"onclick=x"},
  };
  for (const auto& [text, html] : cases) {
    XString value(text);
    ASSERT_TRUE(value.autoLinkUrls());
    EXPECT_EQ(value.utf8(), html);
    if (value.utf8().find("unclosed") == std::string::npos) {
      value.autoLinkUrls();
      EXPECT_EQ(value.utf8(), html) << "doing it twice changes nothing";
    }
  }
}

TEST(AutoLinkTest, TakesLinearTimeForUnclosedMarkup) {
  std::string text;
  for (int i = 0; i < 200'000; ++i) text += "<a <!-- (www.";
  XString value(text);
  EXPECT_TRUE(value.autoLinkUrls());  // a quadratic search would take minutes
  EXPECT_EQ(value.utf8(), text);
}

}  // namespace
}  // namespace zantrel

// The one form in which trees are written.

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

TEST(XmlWriteTest, TheForm) {
  struct {
    std::string text, written;
  } const cases[] = {
      {"<a/>", "<a />\r\n"},
      {"<a p='1'/>", "<a p=\"1\" />\r\n"},
      {"<a>x</a>", "<a>x</a>\r\n"},
      {"<a><b/></a>", "<a>\r\n    <b />\r\n</a>\r\n"},
      {"<a>x<b>y</b><c/></a>", "<a>x\r\n    <b>y</b>\r\n    <c />\r\n</a>\r\n"},
      {"<a><b><c>1</c></b><d/></a>",
       "<a>\r\n    <b>\r\n        <c>1</c>\r\n    </b>\r\n    <d />\r\n</a>\r\n"},
      {"<?xml version='1.0'?><a/>", "<?xml version=\"1.0\" ?>\r\n<a />\r\n"},
      {"<?xml version='1.0' standalone='no'?><a/>",
       "<?xml version=\"1.0\" standalone=\"no\" ?>\r\n<a />\r\n"},
      {"<?xml version='1.0'?><!DOCTYPE a><?xml-stylesheet x?><a/>",
       "<?xml version=\"1.0\" ?>\r\n<?xml-stylesheet x?>\n\r\n<!DOCTYPE a>\n\r\n<a />\r\n"},
      {"<!DOCTYPE a><a/>", "<a />\r\n"},  // only behind a declaration
      {"<", "<nothing />\r\n"},
      {"<a><![CDATA[<&>]]></a>", "<a><![CDATA[<&>]]></a>\r\n"},
      {"<a><![CDATA[]]></a>", "<a />\r\n"},
  };
  for (const auto& one : cases) EXPECT_EQ(Document(one.text).written(), one.written) << one.text;
}

TEST(XmlWriteTest, CharactersBecomeReferences) {
  const Document document("<a/>");
  TreeNode& root = document.root();
  struct {
    std::string text, content, value;
  } const cases[] = {
      {"<>\"'&", "&lt;&gt;&quot;&apos;&amp;", "&lt;&gt;&quot;&apos;&amp;"},
      {"&#65;&#", "&#65;&#", "&#65;&#"},
      {"&amp;&lt;", "&amp;&lt;", "&amp;amp;&amp;lt;"},
      {"&eacute;&nbsp;&yuml;", "&eacute;&nbsp;&yuml;", "&amp;eacute;&amp;nbsp;&amp;yuml;"},
      {"&eacute &bogus; &; &", "&amp;eacute &amp;bogus; &amp;; &amp;",
       "&amp;eacute &amp;bogus; &amp;; &amp;"},
      {"0123456789abcdef<0123456789abcdef", "0123456789abcdef&lt;0123456789abcdef",
       "0123456789abcdef&lt;0123456789abcdef"},
  };
  for (const auto& one : cases) {
    root.setContent(one.text);
    root.editAttributes().clear();
    EXPECT_EQ(document.written(), "<a>" + one.content + "</a>\r\n");
    root.editAttributes().add("p", one.text);
    root.setContent("");
    EXPECT_EQ(document.written(), "<a p=\"" + one.value + "\" />\r\n");
  }
}

TEST(XmlWriteTest, CdataLosesItsOwnMarks) {
  const Document document("<a/>");
  document.root().setCdata(true);
  document.root().setContent("1<![CDATA[2]]>3]]>4");
  EXPECT_EQ(document.written(), "<a><![CDATA[1234]]></a>\r\n");
  document.root().setContent("1<![CDATA[2");  // without an end nothing is lost
  EXPECT_EQ(document.written(), "<a><![CDATA[1<![CDATA[2]]></a>\r\n");
}

TEST(XmlWriteTest, AClosingTagAfterALineFeedIsIndented) {
  EXPECT_EQ(Document("<r><a>x\n</a></r>", false).written(),
            "<r>\r\n    <a>x\n    </a>\r\n</r>\r\n");
}

TEST(XmlWriteTest, IndentationStopsAtFiftyLevels) {
  std::string text;
  for (int i = 0; i < 62; ++i) text += "<a>";
  const std::string written = Document(text).written();
  EXPECT_NE(written.find("\n" + std::string(196, ' ') + "<a>"), written.npos);
  EXPECT_NE(written.find("\n" + std::string(200, ' ') + "<a>"), written.npos);
  EXPECT_EQ(written.find(std::string(201, ' ')), written.npos);
}

TEST(XmlWriteTest, ASubtreeIsWrittenWithoutDeclaration) {
  const Document document("<?xml version='1.0'?><a><b><c/></b></a>");
  EXPECT_EQ(Document::write(document.root().child(0)), "<b>\r\n    <c />\r\n</b>\r\n");
  EXPECT_EQ(document.written(true).substr(0, 3), "<a>");
}

TEST(XmlWriteTest, StandaloneFollowsTheTree) {
  const Document document("<?xml version='1.0'?><a/>");
  document.tree().standalone = true;
  EXPECT_EQ(document.written(), "<?xml version=\"1.0\" standalone=\"yes\" ?>\r\n<a />\r\n");
  document.tree().standalone = false;
  EXPECT_EQ(document.written(), "<?xml version=\"1.0\" standalone=\"no\" ?>\r\n<a />\r\n");
}

}  // namespace
}  // namespace zantrel::test

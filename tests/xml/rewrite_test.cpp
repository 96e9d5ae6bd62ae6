// What is written reads back as what was read, and is written the same again. Here is all that
// makes an exception, each of which the rules of reading and writing want.

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

void expectRewritten(const std::string& text, const std::string& once, const std::string& twice) {
  EXPECT_EQ(Document(text).written(), once) << text;
  EXPECT_EQ(Document(once).written(), twice) << text;
}

TEST(XmlRewriteTest, ContentWithAnAmpersandThatBeginsAReferenceLosesALevel) {
  expectRewritten("<a>&amp;amp;lt;</a>", "<a>&amp;lt;</a>\r\n", "<a>&lt;</a>\r\n");
  expectRewritten("<a>&amp;amp;eacute;</a>", "<a>&amp;eacute;</a>\r\n", "<a>&eacute;</a>\r\n");
  expectRewritten("<a>&amp;amp;#65;</a>", "<a>&amp;#65;</a>\r\n", "<a>&#65;</a>\r\n");
  // In values "&" stays a bare one before "#" only.
  expectRewritten("<a p='&amp;amp;lt;'/>", "<a p=\"&amp;amp;lt;\" />\r\n",
                  "<a p=\"&amp;amp;lt;\" />\r\n");
  expectRewritten("<a p='&amp;#65;'/>", "<a p=\"&#65;\" />\r\n", "<a p=\"&#65;\" />\r\n");
}

TEST(XmlRewriteTest, ContentInPiecesIsDecodedOnceMoreForEveryLaterPiece) {
  expectRewritten("<a>&amp;lt;<b/>x</a>", "<a>&lt; x\r\n    <b />\r\n</a>\r\n",
                  "<a>&lt; x\r\n    <b />\r\n</a>\r\n");
  expectRewritten("<a>&amp;amp;amp;lt;<b/>x</a>", "<a>&amp;lt; x\r\n    <b />\r\n</a>\r\n",
                  "<a>&lt; x\r\n    <b />\r\n</a>\r\n");
}

TEST(XmlRewriteTest, AnEmptyTagGetsAName) {
  expectRewritten("< p='1'>x</>", "<nothing p=\"1\">x</nothing>\r\n",
                  "<nothing p=\"1\">x</nothing>\r\n");
}

TEST(XmlRewriteTest, MarksInsideOfCdataAreLost) {
  expectRewritten("<a><![CDATA[x]]]]><![CDATA[>y<![CDATA[]]></a>", "<a><![CDATA[xy]]></a>\r\n",
                  "<a><![CDATA[xy]]></a>\r\n");
  // Those that the losses make are there the next time.
  expectRewritten("<a><![CDATA[]]]]><![CDATA[]]]]><![CDATA[>>]]></a>", "<a><![CDATA[]]>]]></a>\r\n",
                  "<a><![CDATA[]]></a>\r\n");
}

}  // namespace
}  // namespace zantrel::test

// What the tolerant parser makes of texts, good and bad.

#include <gtest/gtest.h>

#include <string>

#include "frame/progress_monitor.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

struct Case {
  std::string text, outline;
};

void expectOutlines(std::initializer_list<Case> cases, bool trim = true) {
  for (const Case& one : cases) {
    const Document document(one.text, trim);
    ASSERT_TRUE(document.hasTree()) << one.text;
    EXPECT_EQ(outline(document.root()), one.outline) << one.text;
  }
}

TEST(XmlParseTest, ElementsAttributesAndText) {
  expectOutlines({
      {"<a/>", "a"},
      {"<a></a>", "a"},
      {"<a >x</a >", "a[x]"},
      {"<a><b>1</b><c/><b>2</b></a>", "a(b[1],c,b[2])"},
      {"<a p='1' q=\"2\"/>", "a{p=1}{q=2}"},
      {"<a p = '1'\r\n\tq\n=\n\"2\" >x</a>", "a[x]{p=1}{q=2}"},
      {"<a p='say \"x\"' q=\"it's\"/>", "a{p=say \"x\"}{q=it's}"},
      {"<ns:a xmlns:ns='u'/>", "ns:a{xmlns:ns=u}"},
      {"<\xC3\xA9>\xE2\x82\xAC</\xC3\xA9>", "\xC3\xA9[\xE2\x82\xAC]"},
      {"<a p='1' p='2'/>", "a{p=1}{p=2}"},
  });
}

TEST(XmlParseTest, TextAroundChildrenIsJoinedByBlanks) {
  expectOutlines({
      {"<a>x<b/>y</a>", "a[x y](b)"},
      {"<a> x <b/> <c/> y\n</a>", "a[x y](b,c)"},
      {"<a>1<b>2<c/>3</b>4<d/>5</a>", "a[1 4 5](b[2 3](c),d)"},
      {"<a>x<!-- note -->y</a>", "a[x y]"},
  });
}

TEST(XmlParseTest, WithoutTrimmingWhiteSpaceStays) {
  expectOutlines({{"<a> x </a>", "a[ x ]"},
                  {"<a>\r\n</a>", "a[\r\n]"},
                  {"<a> x <b/> y </a>", "a[ x   y ](b)"},
                  {"  <a/>  ", "a"}},
                 false);
}

TEST(XmlParseTest, TextOutsideTheDocumentIsSkipped) {
  expectOutlines({{"before<a>x</a>after", "a[x]"}, {"\xEF\xBB\xBF<a/>", "a"}});
}

TEST(XmlParseTest, FiveReferencesAreDecodedAndNoOthers) {
  expectOutlines({
      {"<a>&lt;&gt;&quot;&apos;&amp;</a>", "a[<>\"'&]"},
      {"<a p='&lt;&gt;&quot;&apos;&amp;'/>", "a{p=<>\"'&}"},
      {"<a p='&#65;'>&#65;&#x42;&nbsp;&unknown;&</a>", "a[&#65;&#x42;&nbsp;&unknown;&]{p=&#65;}"},
      {"<a>&amp;lt;</a>", "a[&lt;]"},
      {"<a p='&amp;lt;'/>", "a{p=&lt;}"},
      {"<a>&LT;&amp</a>", "a[&LT;&amp]"},
  });
}

TEST(XmlParseTest, EarlierTextIsDecodedAgainWithLaterText) {
  expectOutlines({
      {"<a>&amp;lt;<b/>x</a>", "a[< x](b)"},
      {"<a>&amp;amp;lt;<b/>x<b/>y</a>", "a[< x y](b,b)"},
      {"<a>&amp;amp;lt;<b/>x</a>", "a[&lt; x](b)"},
      {"<a>x<b/>&amp;lt;</a>", "a[x &lt;](b)"},
      {"<a><![CDATA[&lt;]]><b/>x</a>", "a![< x](b)"},
      {"<a>&am<![CDATA[p;lt;]]></a>", "a![&amp;lt;]"},
      {"<a>&am<![CDATA[p;lt;]]><b/>x</a>", "a![&lt; x](b)"},
  });
}

TEST(XmlParseTest, CdataIsTakenAsItIs) {
  expectOutlines({
      {"<a><![CDATA[ <b> &lt; ]]></a>", "a![ <b> &lt; ]"},
      {"<a><![CDATA[x]]><![CDATA[y]]></a>", "a![xy]"},
      {"<a>t<![CDATA[x]]>u</a>", "a![tx u]"},
      {"<a><![CDATA[]]>u</a>", "a![u]"},
      {"<a><![CDATA[]]></a>", "a!"},
      {"<a><![CDATA[x]]]]></a>", "a![x]]]"},
      {"<![CDATA[x]]><a/>", "a"},
  });
}

TEST(XmlParseTest, AnyClosingTagClosesTheOpenElement) {
  expectOutlines({
      {"<a><b>x</c>y</a>", "a[y](b[x])"},
      {"<a></ >", "a"},
      {"</x><a/>", "a"},
  });
}

TEST(XmlParseTest, UnclosedElementsAreAccepted) {
  expectOutlines({
      {"<a><b>", "a(b)"},
      {"<a>x<b>y", "a[x](b[y])"},
      {"<a p='1", "a{p=1}"},
      {"<a", "a"},
      {"<", ""},
      {"<a/><b>", "a"},
      {"<a><b></a>", "a(b)"},
  });
}

TEST(XmlParseTest, TheLastCompleteTopLevelElementIsTheDocument) {
  const Document document("<?xml version='1.0'?><!DOCTYPE x><a/><b/>");
  ASSERT_TRUE(document.hasTree());
  EXPECT_EQ(outline(document.root()), "b");
  EXPECT_EQ(document.tree().declaration, nullptr);  // it belonged to the first
  EXPECT_TRUE(document.tree().docType.empty());
}

TEST(XmlParseTest, OddAttributesAreTakenByFixedRules) {
  expectOutlines({
      {"<a checked q='1'/>", "a{checked=}{q=1}"},
      {"<a ='1' q='2'/>", "a{q=2}"},
      {"<a p\"q'=\"1\"/>", "a{pq=1}"},
      {"<a p=1 q=\"2\"/>", "a{p=1 q=}{2=}"},
      {"<a p=1>x</a>'/>", "a{p=1>x</a>}"},
      {"<a / b='1'/>", "a{b=1}"},
      {"<a / >x</a>", "a"},
  });
}

TEST(XmlParseTest, DeclarationDoctypeAndInstructionsGoToTheTree) {
  const Document document(
      "<?xml version=\"1.0\" encoding='utf-8' standalone=\"yes\"?>\n"
      "<?xml-stylesheet href=\"a.xsl\"?><!DOCTYPE a [ <!ELEMENT a (b)> ]>\n"
      "<?target key='value' word?><a/>");
  ASSERT_TRUE(document.hasTree());
  const TreeInfo& tree = document.tree();
  EXPECT_EQ(outline(*tree.declaration), "xml{version=1.0}{encoding=utf-8}{standalone=yes}");
  EXPECT_TRUE(tree.standalone);
  EXPECT_EQ(tree.styleSheet.view(), "<?xml-stylesheet href=\"a.xsl\"?>\n");
  EXPECT_EQ(tree.docType.view(), "<!DOCTYPE a [ <!ELEMENT a (b)> ]>\n");
  ASSERT_EQ(tree.processingInstructions.size(), 1U);
  EXPECT_EQ(outline(*tree.processingInstructions[0]), "target{key=value}{word=}");
  EXPECT_EQ(document.log(), "");
}

TEST(XmlParseTest, OtherDeclarationsAreSkipped) {
  expectOutlines({{"<!ELEMENT x><a><!NOTE y>t</a>", "a[t]"}, {"<!><a/>", "a"}});
}

TEST(XmlParseTest, NothingWithoutAnElement) {
  for (const char* text : {"", " ", "text", "<?xml version='1.0'?>", "<!-- c -->", "</a>", "<!x"})
    EXPECT_FALSE(Document(text).hasTree()) << text;
}

TEST(XmlParseTest, ErrorsTellTheirPlace) {
  struct {
    std::string text, log, outline;
  } const cases[] = {
      {"<a>\n <b/>\n  <!-- x</a>", "error: Unclosed comment\nline: 3\ncolumn: 3\n", "a(b)"},
      {"<a>\r\n<b></b <c/></a>", "error: Error in closing tag\nline: 2\ncolumn: 4\nerror_tag: b\n",
       "a(b,c)"},
      {"<a>x</a", "error: Error in closing tag\nline: 1\ncolumn: 5\nerror_tag: a\n", "a[x]"},
      {"<a/><!DOCTYPE x [", "error: Failed to parse DTD\nline: 1\ncolumn: 5\n", "a"},
      {"<a>t<![CDATA[x]]</a>", "error: Unclosed CDATA section\nline: 1\ncolumn: 5\n",
       "a![tx]]</a>]"},
  };
  for (const auto& one : cases) {
    const Document document(one.text);
    ASSERT_TRUE(document.hasTree()) << one.text;
    EXPECT_EQ(document.log(), one.log) << one.text;
    EXPECT_EQ(outline(document.root()), one.outline) << one.text;
  }
}

TEST(XmlParseTest, ManyErrorsAreNotAllListed) {
  std::string text = "<a>";
  for (int i = 0; i < 100000; ++i) text += "\n<b></b<";
  const Document document(text);
  EXPECT_LT(document.log().size(), 20000U);
  EXPECT_NE(document.log().find("info: Further errors in the XML are not listed."),
            std::string::npos);
}

TEST(XmlParseTest, AMillionElementsInsideEachOther) {
  constexpr std::size_t kDepth = 1000000;
  std::string text;
  for (std::size_t i = 0; i < kDepth; ++i) text += "<a>";
  const Document document(text);
  ASSERT_TRUE(document.hasTree());
  std::size_t depth = 0;
  for (const TreeNode* node = &document.root(); node != nullptr;
       node = node->next(&document.root()))
    ++depth;
  EXPECT_EQ(depth, kDepth);
  EXPECT_GT(document.written().size(), kDepth);
}

TEST(XmlParseTest, AMillionOfEverything) {
  std::string text = "<a ";
  for (int i = 0; i < 1000000; ++i) text += "p='' ";
  text += ">";
  for (int i = 0; i < 1000000; ++i) text += "x<b/>";
  const Document document(text + "</a>");
  ASSERT_TRUE(document.hasTree());
  EXPECT_EQ(document.root().attributes().count(), 1000000U);
  EXPECT_EQ(document.root().numChildren(), 1000000U);
  EXPECT_EQ(document.root().content().size(), 1999999U);
}

class AbortAtHalf final : public ProgressEvent {
 public:
  void PercentDone(std::uint32_t percent, bool& abort) override { abort = percent >= 50; }
};

TEST(XmlParseTest, AnAbortLeavesNoTree) {
  std::string text = "<a>";
  for (int i = 0; i < 10000; ++i) text += "<b></b>";
  AbortAtHalf events;
  ProgressMonitor progress(&events, 1);
  const XmlStore::Ref store = XmlStore::create();
  RecordedLog log;
  EXPECT_EQ(ParseEngine(*store, {}, log, &progress).parse(text + "</a>"), nullptr);
}

}  // namespace
}  // namespace zantrel::test

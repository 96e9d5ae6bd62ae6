// Content in other forms, and back.

#include <gtest/gtest.h>

#include <string>

#include "compress/zantrel_deflate.h"
#include "core/data_buffer.h"
#include "core/encode/base64.h"
#include "xml/xml_content.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

TEST(XmlContentTest, ContentBecomesEncodedWordsAndBack) {
  const Document document("<a>für x</a>");
  TreeNode& root = document.root();
  RecordedLog log;
  ASSERT_TRUE(encodeContent(root, "iso-8859-1", WordCoding::Q, log));
  EXPECT_EQ(root.content(), "=?iso-8859-1?Q?f=FCr_x?=");
  ASSERT_TRUE(decodeContent(root, log));
  EXPECT_EQ(root.content(), "für x");
  EXPECT_FALSE(encodeContent(root, "none such", WordCoding::B, log));
  EXPECT_EQ(root.content(), "für x");
}

TEST(XmlContentTest, ReferencesBecomeCharacters) {
  const Document document("<a>&amp;eacute;&amp;#233;&amp;lt;&bogus;</a>");
  decodeContentEntities(document.root());
  EXPECT_EQ(document.root().content(), "éé<&bogus;");
}

TEST(XmlContentTest, BytesComeBackAsTheyWere) {
  const Document document("<a/>");
  TreeNode& root = document.root();
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += static_cast<char>(i % 256);
  for (const std::string& one : {std::string(), bytes}) {
    for (const bool zip : {false, true}) {
      for (const bool encrypt : {false, true}) {
        const BinaryContent how{zip, encrypt, "secret"};
        RecordedLog log;
        DataBuffer out;
        ASSERT_TRUE(setBinaryContent(root, asBytes(one), how, log)) << log.text();
        EXPECT_EQ(root.content().find_first_of(" \r\n<&"), root.content().npos);
        ASSERT_TRUE(getBinaryContent(root, how, out, log)) << log.text();
        EXPECT_EQ(out.text(), one);
      }
    }
  }
}

TEST(XmlContentTest, ContentComesBackAsItWas) {
  struct {
    BinaryContent how;
    BinaryContent wrong;
    std::string error;
  } const cases[] = {
      {{.zip = true},
       {.encrypt = true, .password = "p"},
       "error: The password is wrong, or the data was not encrypted in this way.\n"},
      {{.encrypt = true, .password = "p"},
       {.encrypt = true, .password = "q"},
       "error: The password is wrong, or the data was not encrypted in this way.\n"},
      {{.encrypt = true, .password = "p"},
       {.zip = true},
       "error: The content is no compressed data, or it is damaged.\n"},
      {{.encrypt = true, .password = "p"}, {.encrypt = true}, "error: A password is needed.\n"},
      {{.zip = true}, {}, "error: The bytes in the content are not text.\n"},
  };
  for (const auto& one : cases) {
    const Document document("<a>Größe &lt; 1</a>");
    TreeNode& root = document.root();
    RecordedLog log;
    ASSERT_TRUE(wrapContent(root, one.how, log));
    const std::string wrapped(root.content());
    EXPECT_FALSE(unwrapContent(root, one.wrong, log));
    EXPECT_NE(log.text().find(one.error), std::string::npos) << log.text();
    EXPECT_EQ(root.content(), wrapped);
    ASSERT_TRUE(unwrapContent(root, one.how, log));
    EXPECT_EQ(root.content(), "Größe < 1");
  }
}

TEST(XmlContentTest, DamagedCompressedContentIsRefused) {
  const Document document("<a>some text, some text, some text</a>");
  TreeNode& root = document.root();
  RecordedLog log;
  ASSERT_TRUE(wrapContent(root, {.zip = true}, log));
  DataBuffer bytes;
  ASSERT_TRUE(base64Decode(root.content(), bytes));
  const auto refuses = [&root, &log](std::string_view damaged) {
    EXPECT_TRUE(setBinaryContent(root, asBytes(damaged), {}, log));
    return !unwrapContent(root, {.zip = true}, log);
  };
  for (std::size_t size = 0; size < bytes.getSize(); ++size)
    EXPECT_TRUE(refuses(bytes.text().substr(0, size))) << size;
  EXPECT_TRUE(refuses(std::string(bytes.text()) + "x"));
  std::string changed(bytes.text());
  changed.back() = static_cast<char>(changed.back() ^ 1);
  EXPECT_TRUE(refuses(changed));
  EXPECT_FALSE(refuses(bytes.text()));
}

TEST(XmlContentTest, ABombIsRefused) {
  const Document document("<a/>");
  RecordedLog log;
  const std::string piece(std::size_t{16} << 20, ' ');
  ZantrelDeflate engine;
  DataBuffer bomb;
  ASSERT_TRUE(engine.beginZlibCompress(asBytes(piece), bomb, log));
  for (int i = 0; i < 16; ++i) ASSERT_TRUE(engine.moreCompress(asBytes(piece), bomb, log, nullptr));
  ASSERT_TRUE(engine.endCompress(bomb, log, nullptr));
  ASSERT_TRUE(setBinaryContent(document.root(), bomb.bytes(), {}, log));
  DataBuffer out;
  EXPECT_FALSE(getBinaryContent(document.root(), {.zip = true}, out, log));
  EXPECT_EQ(out.getSize(), 0U);
}

// Zips what is below the root as ClsXml does.
void zip(const Document& document) {
  RecordedLog log;
  StringBuffer text{std::string_view()};
  TreeNode& root = document.root();
  ASSERT_TRUE(zipTree(root, text, log)) << log.text();
  while (root.numChildren() != 0) document.store().end(root.takeChild(root.numChildren() - 1));
  root.setContent(text.view());
  root.setCdata(false);
}

TEST(XmlContentTest, TreesComeBackAsTheyWere) {
  const std::string cases[] = {
      "<a/>",
      "<a>x</a>",
      "<a p='1'>x<b q='&lt;&amp;&quot;&apos;&gt;' r=''/><c> \t</c><d>\r\n y </d> z </a>",
      "<a><b><c><d/></c></b><e/><f><g/></f></a>",
      "<a><![CDATA[<x>]]><b><![CDATA[&amp;]]></b><c><![CDATA[]]></c></a>",
      "<a>&amp;amp;&amp;lt;&amp;#65;&amp;eacute;&#65;<b>&amp;</b></a>",
      "<a><b<c d<e='1' /><></></a>",
  };
  for (const std::string& text : cases) {
    const Document document(text, false);
    const std::string before = outline(document.root());
    zip(document);
    RecordedLog log;
    EXPECT_TRUE(unzipTree(document.root(), document.store(), log)) << log.text();
    EXPECT_EQ(outline(document.root()), before);
    EXPECT_EQ(log.text(), "");
  }
}

TEST(XmlContentTest, EditedTreesComeBackAsTheyWere) {
  const Document document("<a><b/></a>");
  TreeNode& b = *document.root().child(0);
  b.setContent("]]>x]]]>&lt;");
  b.setCdata(true);
  b.editAttributes().add("p", "\"&quot;'\r\n<>");
  const std::string before = outline(document.root());
  zip(document);
  document.root().setTag("other");
  document.root().editAttributes().add("q", "1");
  RecordedLog log;
  EXPECT_TRUE(unzipTree(document.root(), document.store(), log)) << log.text();
  EXPECT_EQ(outline(document.root()), "other{q=1}" + before.substr(1));
}

TEST(XmlContentTest, NamesThatCannotBeReadAreRefused) {
  const char* const names[] = {"a b", "a/", "a>", "!a", "?a", "/"};
  for (const char* name : names) {
    const Document document("<a><b/></a>");
    document.root().child(0)->setTag(name);
    RecordedLog log;
    StringBuffer text;
    EXPECT_FALSE(zipTree(document.root(), text, log)) << name;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(log.text(), "error: A tag or a name of an attribute could not be read again.\n");
  }
  for (const char* name : {"", "a b", "a=", "a'", "a\""}) {
    const Document document("<a><b/></a>");
    document.root().child(0)->editAttributes().add(name, "");
    RecordedLog log;
    StringBuffer text;
    EXPECT_FALSE(zipTree(document.root(), text, log)) << name;
  }
}

TEST(XmlContentTest, DeepAndWideTreesComeBack) {
  std::string text = "<r>";
  for (int i = 0; i < 100000; ++i) text += "<a/>";
  for (int i = 0; i < 300000; ++i) text += "<d>";
  const Document document(text);
  const std::size_t before = document.written().size();
  zip(document);
  RecordedLog log;
  EXPECT_TRUE(unzipTree(document.root(), document.store(), log));
  EXPECT_EQ(document.written().size(), before);
}

TEST(XmlContentTest, OnlyWhatWasATreeBecomesOne) {
  const Document document("<a>text<b/></a>");
  TreeNode& root = document.root();
  RecordedLog log;
  EXPECT_FALSE(unzipTree(root, document.store(), log));
  EXPECT_EQ(outline(root), "a[text](b)");
  ASSERT_TRUE(wrapContent(root, {.zip = true}, log));
  EXPECT_FALSE(unzipTree(root, document.store(), log));
  EXPECT_TRUE(log.has("The content is no tree that was made a text."));
}

}  // namespace
}  // namespace zantrel::test

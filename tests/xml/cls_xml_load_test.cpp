// Documents from texts and files, and back.

#include "support/test_data.h"
#include "xml/cls_xml_test_support.h"

namespace zantrel::test {
namespace {

using std::string;

string utf16(std::u16string_view text, bool bigEndian) {
  string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? string{high, low} : string{low, high};
  }
  return bytes;
}

class ClsXmlFileTest : public testing::Test {
 protected:
  bool loadFile(const string& bytes) {
    writeFile(folder / "in.xml", bytes);
    return xml.LoadXmlFile(XString(folder / "in.xml"), nullptr);
  }
  string saved(bool& succeeded) {
    succeeded = xml.SaveXml(XString(path), nullptr);
    return succeeded ? readFile(path) : string();
  }

  TempFolder folder;
  const string path = folder / "out.xml";
  ClsXml xml;
};

TEST_F(ClsXmlFileTest, TheCharsetIsThatOfMarkZeroBytesOrDeclaration) {
  const std::u16string wide = u"<a>\u00e4\u6f22</a>";
  const struct {
    const char* what;
    string bytes, content;
  } cases[] = {
      {"no word", "<a>\xC3\xA4</a>", "\xC3\xA4"},
      {"mark of UTF-8", "\xEF\xBB\xBF<a>\xC3\xA4</a>", "\xC3\xA4"},
      {"mark of UTF-16LE", "\xFF\xFE" + utf16(wide, false), "\xC3\xA4\xE6\xBC\xA2"},
      {"mark of UTF-16BE", "\xFE\xFF" + utf16(wide, true), "\xC3\xA4\xE6\xBC\xA2"},
      {"UTF-16LE without mark", utf16(wide, false), "\xC3\xA4\xE6\xBC\xA2"},
      {"UTF-16BE without mark", utf16(u" " + wide, true), "\xC3\xA4\xE6\xBC\xA2"},
      {"UTF-16 by declaration too",
       "\xFF\xFE" + utf16(u"<?xml version='1.0' encoding='utf-16'?>" + wide, false),
       "\xC3\xA4\xE6\xBC\xA2"},
      {"bytes that call themselves UTF-16",
       "<?xml version='1.0' encoding='UTF-16'?><a>\xC3\xA4</a>", "\xC3\xA4"},
      {"bytes that call themselves unicode", "<?xml encoding='unicode'?><a>\xC3\xA4</a>",
       "\xC3\xA4"},
      {"mark against declaration", "\xEF\xBB\xBF<?xml encoding='windows-1252'?><a>\xC3\xA4</a>",
       "\xC3\xA4"},
      {"windows-1252", "<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\x80\xE4</a>",
       "\xE2\x82\xAC\xC3\xA4"},
      {"Shift_JIS", "<?xml version='1.0' encoding = 'Shift_JIS' ?><a>\x8A\xBF\x8E\x9A</a>",
       "\xE6\xBC\xA2\xE5\xAD\x97"},
      {"unknown name", "<?xml encoding='klingon'?><a>\xC3\xA4</a>", "\xC3\xA4"},
      {"a name elsewhere", "<a><!-- encoding='windows-1252' -->\xC3\xA4</a>", "\xC3\xA4"},
  };
  for (const auto& one : cases) {
    ASSERT_TRUE(loadFile(one.bytes)) << one.what << logOf(xml);
    XString content;
    xml.get_Content(content);
    EXPECT_EQ(content.utf8(), one.content) << one.what;
  }
}

TEST_F(ClsXmlFileTest, BytesThatAreNotValidAreRefused) {
  const string before = writtenBy(xml);
  for (const string& bytes : {string("<a>12\xE4</a>"), string("<?xml encoding='euc-jp'?><a>\x8F"),
                              string("\xFF\xFE<\0a\0\0\xD8>\0", 10)}) {
    EXPECT_FALSE(loadFile(bytes));
    EXPECT_NE(logOf(xml).find("Failed to convert XML data to utf-8 internal representation"),
              string::npos);
    EXPECT_EQ(writtenBy(xml), before);
  }
  EXPECT_FALSE(loadFile("<a>12\xE4</a>"));
  EXPECT_NE(logOf(xml).find("byteOffset: 5"), string::npos) << logOf(xml);
}

TEST_F(ClsXmlFileTest, SavingHonoursTheEncoding) {
  load(xml, "<a p='\xC3\xA4'>\xE6\xBC\xA2</a>");
  struct {
    const char* encoding;
    string bytes;
  } const cases[] = {
      {"utf-8", "<a p=\"\xC3\xA4\">\xE6\xBC\xA2</a>\r\n"},
      {"shift_jis", "<a p=\"&#xE4;\">\x8A\xBF</a>\r\n"},
      {"windows-1252", "<a p=\"\xE4\">&#x6F22;</a>\r\n"},
      {"us-ascii", "<a p=\"&#xE4;\">&#x6F22;</a>\r\n"},
  };
  for (const auto& one : cases) {
    bool succeeded = false;
    xml.set_Encoding(one.encoding);
    const string bytes = saved(succeeded);
    ASSERT_TRUE(succeeded) << logOf(xml);
    EXPECT_EQ(bytes,
              "<?xml version=\"1.0\" encoding=\"" + string(one.encoding) + "\" ?>\r\n" + one.bytes);
  }
  bool succeeded = false;
  xml.set_Encoding("utf-16");
  const string bytes = saved(succeeded);
  EXPECT_EQ(bytes.substr(0, 4), string("\xFF\xFE<\0", 4));
  ASSERT_TRUE(xml.LoadXmlFile(XString(path), nullptr));
  EXPECT_EQ(outlineOf(xml), "a[\xE6\xBC\xA2]{p=\xC3\xA4}");
}

TEST_F(ClsXmlFileTest, WhatCannotBeWrittenLeavesTheOldFile) {
  writeFile(path, "old");
  struct {
    const char *text, *encoding, *words;
  } const cases[] = {
      {"<a/>", "klingon", "Unknown charset."},
      {"<\xC3\xA4/>", "us-ascii", "The encoding lacks a character"},
      {"<a \xC3\xA4='1'/>", "us-ascii", "The encoding lacks a character"},
      {"<a><b><![CDATA[\xC3\xA4]]></b></a>", "us-ascii", "The encoding lacks a character"},
      {"<?xml?><!DOCTYPE \xC3\xA4><a>\xC3\xA4</a>", "us-ascii", "The encoding lacks a character"},
  };
  for (const auto& one : cases) {
    load(xml, one.text);
    xml.set_Encoding(one.encoding);
    bool succeeded = true;
    saved(succeeded);
    EXPECT_FALSE(succeeded) << one.text;
    EXPECT_NE(logOf(xml).find(one.words), string::npos) << logOf(xml);
    EXPECT_EQ(readFile(path), "old");
  }
}

TEST_F(ClsXmlFileTest, AnElementBelowTheRootIsSavedAsUtf8) {
  load(xml, "<?xml version='1.0' encoding='utf-16'?><a><b>\xC3\xA4</b></a>");
  ASSERT_TRUE(xml.FirstChild2());
  bool succeeded = false;
  EXPECT_EQ(saved(succeeded), "<b>\xC3\xA4</b>\r\n");
}

TEST(ClsXmlLoadTest, TrimsUnlessToldOtherwise) {
  ClsXml xml;
  constexpr char kText[] = "<a> x </a>";
  ASSERT_TRUE(xml.LoadXml(kText, nullptr));
  EXPECT_EQ(writtenBy(xml), "<a>x</a>\r\n");
  ASSERT_TRUE(xml.LoadXml2(kText, false, nullptr));
  EXPECT_EQ(writtenBy(xml), "<a> x </a>\r\n");
  ASSERT_TRUE(xml.LoadXml2(kText, true, nullptr));
  EXPECT_EQ(writtenBy(xml), "<a>x</a>\r\n");
}

TEST(ClsXmlLoadTest, WhatStandsBeforeTheRoot) {
  ClsXml xml;
  load(xml, "<?xml version='1.0' standalone='yes'?><!DOCTYPE a><a><b/></a>");
  EXPECT_TRUE(xml.get_Standalone());
  EXPECT_EQ(given([&](XString& o) { return xml.get_DocType(o), true; }), "<!DOCTYPE a>");
  EXPECT_EQ(given([&](XString& o) { return xml.get_Encoding(o), true; }), "");
  xml.set_Encoding("utf-8");
  xml.set_Standalone(false);
  xml.set_DocType("<!DOCTYPE b>");
  ASSERT_TRUE(xml.AddStyleSheet("<?xml-stylesheet href='a'?>"));
  EXPECT_FALSE(xml.AddStyleSheet("href='a'"));
  EXPECT_EQ(writtenBy(xml),
            "<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"no\" ?>\r\n"
            "<?xml-stylesheet href='a'?>\n\r\n<!DOCTYPE b>\r\n<a>\r\n    <b />\r\n</a>\r\n");
  xml.set_Encoding("");
  EXPECT_EQ(given([&](XString& o) { return xml.get_Encoding(o), true; }), "");
  ASSERT_TRUE(xml.Clear());
  EXPECT_EQ(writtenBy(xml), "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\r\n<nothing />\r\n");
}

TEST(ClsXmlLoadTest, SettingsMakeADeclaration) {
  const std::function<void(ClsXml&)> settings[] = {
      [](ClsXml& x) { x.set_Encoding("utf-8"); }, [](ClsXml& x) { x.set_Standalone(true); },
      [](ClsXml& x) { x.set_DocType("<!DOCTYPE a>"); },
      [](ClsXml& x) { x.AddStyleSheet("<?xml-stylesheet a?>"); }};
  for (const auto& set : settings) {
    ClsXml xml;
    load(xml, "<a/>");
    set(xml);
    EXPECT_EQ(writtenBy(xml).substr(0, 5), "<?xml");
  }
}

TEST_F(ClsXmlFileTest, AStrictLoadRefusesWhatIsNotWellFormed) {
  constexpr char kBroken[] = "<a>\n <b>x</c></a>";
  EXPECT_TRUE(xml.LoadXml(kBroken, nullptr));
  load(xml, "<before/>");
  xml.set_RequireWellFormed(true);
  EXPECT_FALSE(xml.LoadXml(kBroken, nullptr));
  expectLogged(xml, {"line: 2", "column: "});
  EXPECT_FALSE(loadFile(kBroken));
  EXPECT_EQ(outlineOf(xml), "before");
  EXPECT_TRUE(xml.LoadXml("<a>\n <b>x</b></a>", nullptr));
  EXPECT_EQ(outlineOf(xml), "a(b[x])");
}

class Events final : public ProgressEvent {
 public:
  explicit Events(std::uint32_t abortAt) : abortAt_(abortAt) {}
  void PercentDone(std::uint32_t percent, bool& abort) override {
    last = percent;
    abort = percent >= abortAt_;
  }
  std::uint32_t last = 0;

 private:
  std::uint32_t abortAt_;
};

TEST_F(ClsXmlFileTest, ProgressIsToldAndCanBeStopped) {
  string text = "<a>";
  for (int i = 0; i < 100000; ++i) text += "<b>1</b>";
  Events all(1000), half(50);
  EXPECT_TRUE(xml.LoadXml(text + "</a>", &all));
  EXPECT_EQ(all.last, 100U);
  EXPECT_FALSE(xml.LoadXml("<z>" + text, &half));
  EXPECT_NE(logOf(xml).find("Aborted by the application."), string::npos);
  EXPECT_EQ(tagOf(xml), "a");
  writeFile(path, "old");
  EXPECT_FALSE(xml.SaveXml(XString(path), &half));
  EXPECT_EQ(readFile(path), "old");
  all.last = 0;
  EXPECT_TRUE(xml.SaveXml(XString(path), &all));
  EXPECT_EQ(all.last, 100U);
}

}  // namespace
}  // namespace zantrel::test

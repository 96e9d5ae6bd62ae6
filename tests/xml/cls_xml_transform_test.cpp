// Content in other forms, through the component. What the forms are is tested with their engines.

#include "support/test_data.h"
#include "xml/cls_xml_test_support.h"

namespace zantrel::test {
namespace {

using std::string;

constexpr char kText[] = "<a p='1'>gr\xC3\xBC\xC3\x9F &amp;eacute;<b>x</b></a>";
const XString kPassword("secret");

TEST(ClsXmlTransformTest, ContentReturnsFromEveryForm) {
  struct {
    const char* name;
    std::function<bool(ClsXml&)> there, back;
    string part;  // of the form in between; empty for what has no fixed form
  } const cases[] = {
      {"Q", [](ClsXml& x) { return x.QEncodeContent("utf-8"); },
       [](ClsXml& x) { return x.DecodeContent(); }, "=?utf-8?Q?gr=C3=BC"},
      {"B", [](ClsXml& x) { return x.BEncodeContent("iso-8859-1"); },
       [](ClsXml& x) { return x.DecodeContent(); }, "=?iso-8859-1?B?"},
      {"zip", [](ClsXml& x) { return x.ZipContent(); }, [](ClsXml& x) { return x.UnzipContent(); },
       "a[eJ"},
      {"encrypt", [](ClsXml& x) { return x.EncryptContent(kPassword); },
       [](ClsXml& x) { return x.DecryptContent(kPassword); }, ""},
      {"tree", [](ClsXml& x) { return x.ZipTree(); }, [](ClsXml& x) { return x.UnzipTree(); },
       "a[eJ"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    ClsXml xml;
    load(xml, kText);
    const string before = outlineOf(xml);
    ASSERT_TRUE(one.there(xml)) << logOf(xml);
    EXPECT_NE(outlineOf(xml), before);
    EXPECT_NE(outlineOf(xml).find(one.part), string::npos) << outlineOf(xml);
    ASSERT_TRUE(one.back(xml)) << logOf(xml);
    EXPECT_EQ(outlineOf(xml), before);
  }
}

TEST(ClsXmlTransformTest, WhatCannotBeTurnedBackStays) {
  const std::function<bool(ClsXml&)> cases[] = {
      [](ClsXml& x) { return x.UnzipContent(); },
      [](ClsXml& x) { return x.UnzipTree(); },
      [](ClsXml& x) { return x.DecryptContent(kPassword); },
      [](ClsXml& x) { return x.EncryptContent(XString()); },
      [](ClsXml& x) { return x.DecryptContent(XString()); },
      [](ClsXml& x) { return x.QEncodeContent("klingon"); },
      [](ClsXml& x) { return x.BEncodeContent("us-ascii"); },
      [](ClsXml& x) { return x.SetBinaryContent(DataBuffer(), false, true, XString()); },
      [](ClsXml& x) {
        return x.SetBinaryContentFromFile(XString("/nowhere/file"), false, false, XString());
      },
  };
  int number = 0;
  for (const auto& method : cases) {
    SCOPED_TRACE(number++);
    ClsXml xml;
    load(xml, kText);
    const string before = outlineOf(xml);
    EXPECT_FALSE(method(xml));
    EXPECT_EQ(outlineOf(xml), before);
  }
}

TEST(ClsXmlTransformTest, DecodesTheReferencesOfHtml) {
  ClsXml xml;
  load(xml, "<a>&eacute;&#233;&lt;</a>");
  ASSERT_TRUE(xml.DecodeEntities());
  XString content;
  xml.get_Content(content);
  EXPECT_EQ(content.utf8(), "\xC3\xA9\xC3\xA9<");
}

TEST(ClsXmlTransformTest, BytesGoInAndOutByMemoryAndFile) {
  const TempFolder folder;
  string data;
  for (int i = 0; i < 5000; ++i) data += static_cast<char>(i / 7);
  writeFile(folder / "in", data);
  for (const bool zip : {false, true}) {
    for (const bool encrypt : {false, true}) {
      ClsXml xml;
      DataBuffer out;
      ASSERT_TRUE(xml.SetBinaryContent(bytes(data), zip, encrypt, kPassword));
      ASSERT_TRUE(xml.GetBinaryContentX(zip, encrypt, kPassword, out));
      EXPECT_EQ(out.text(), data);
      ASSERT_TRUE(xml.SetBinaryContentFromFile(XString(folder / "in"), zip, encrypt, kPassword));
      ASSERT_TRUE(xml.SaveBinaryContent(XString(folder / "out"), zip, encrypt, kPassword));
      EXPECT_EQ(readFile(folder / "out"), data);
    }
  }
}

TEST(ClsXmlTransformTest, HandlesBelowAZippedTreeKeepTheirElements) {
  ClsXml xml, child;
  load(xml, kText);
  ASSERT_TRUE(xml.GetChildX(0, child));
  ASSERT_TRUE(xml.ZipTree());
  EXPECT_EQ(outlineOf(child), "b[x]");
  EXPECT_NE(child.get_TreeId(), xml.get_TreeId());
}

}  // namespace
}  // namespace zantrel::test

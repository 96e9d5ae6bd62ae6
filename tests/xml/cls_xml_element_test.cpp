// What an element and its children hold, through the component.

#include "xml/cls_xml_test_support.h"

namespace zantrel::test {
namespace {

using std::string;

TEST(ClsXmlTest, ANewOneIsTheRootOfATreeOfItsOwn) {
  ClsXml xml;
  EXPECT_EQ(writtenBy(xml), "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\r\n<nothing />\r\n");
  ClsXml other;
  EXPECT_NE(xml.get_TreeId(), other.get_TreeId());
}

TEST(ClsXmlTest, EditsOfTheElement) {
  expectEdits({
      {"<a/>", [](ClsXml& x) { return x.set_Tag("b"), x.RemoveAllChildren(); }, true, "b"},
      {"<a>x</a>", [](ClsXml& x) { return x.AppendToContent("<y>"); }, true, "a[x<y>]"},
      {"<a> 40 km</a>", [](ClsXml& x) { return x.AddToContent(2); }, true, "a[42]"},
      {"<a>x</a>", [](ClsXml& x) { return x.AddToContent(-2); }, true, "a[-2]"},
      {"<a>2147483647</a>", [](ClsXml& x) { return x.AddToContent(1); }, true, "a[2147483648]"},
      {"<a>x</a>", [](ClsXml& x) { return x.set_Cdata(true), x.AppendToContent(""); }, true,
       "a![x]"},
      {"<a p='1'>x<b/></a>", [](ClsXml& x) { return x.Clear(); }, true, "nothing"},
  });
}

TEST(ClsXmlTest, EditsOfAttributes) {
  expectEdits({
      {"<a p='1'/>", [](ClsXml& x) { return x.AddAttribute("q", "<"); }, true, "a{p=1}{q=<}"},
      {"<a p='1'/>", [](ClsXml& x) { return x.AddAttribute("p", "2"); }, false, "a{p=1}"},
      {"<a/>", [](ClsXml& x) { return x.AddAttribute("", "2"); }, false, "a"},
      {"<a/>", [](ClsXml& x) { return x.AddAttributeInt("p", -3); }, true, "a{p=-3}"},
      {"<a p='1'/>", [](ClsXml& x) { return x.AddOrUpdateAttribute("p", "2"); }, true, "a{p=2}"},
      {"<a/>", [](ClsXml& x) { return x.AddOrUpdateAttributeI("p", 2); }, true, "a{p=2}"},
      {"<a P='1'/>", [](ClsXml& x) { return x.UpdateAttribute("p", "2"); }, true, "a{P=1}{p=2}"},
      {"<a p='1'/>", [](ClsXml& x) { return x.UpdateAttributeInt("p", 7); }, true, "a{p=7}"},
      {"<a p='1'/>", [](ClsXml& x) { return x.UpdateAttribute("", "7"); }, false, "a{p=1}"},
      {"<a p='40'/>", [](ClsXml& x) { return x.AddToAttribute("p", 2); }, true, "a{p=42}"},
      {"<a/>", [](ClsXml& x) { return x.AddToAttribute("p", 2); }, true, "a{p=2}"},
      {"<a p='1' q='2' p='3'/>", [](ClsXml& x) { return x.RemoveAttribute("p"); }, true, "a{q=2}"},
      {"<a p='1'/>", [](ClsXml& x) { return x.RemoveAttribute("q"); }, false, "a{p=1}"},
      {"<a p='1' q='2'/>", [](ClsXml& x) { return x.RemoveAllAttributes(); }, true, "a"},
      {"<a/>", [](ClsXml& x) { return x.RemoveAllAttributes(); }, true, "a"},
  });
}

TEST(ClsXmlTest, EditsOfChildren) {
  expectEdits({
      {"<a><b/></a>", [](ClsXml& x) { return x.NewChild2("c", "x&"); }, true, "a(b,c[x&])"},
      {"<a/>", [](ClsXml& x) { return x.NewChildInt2("c", 5); }, true, "a(c[5])"},
      {"<a><b>1</b><b>2</b></a>", [](ClsXml& x) { return x.UpdateChildContent("b", "3"); }, true,
       "a(b[3],b[2])"},
      {"<a/>", [](ClsXml& x) { return x.UpdateChildContentInt("b", 3); }, true, "a(b[3])"},
      {"<a><b>1</b></a>", [](ClsXml& x) { return x.AddToChildContent("b", 4); }, true, "a(b[5])"},
      {"<a/>", [](ClsXml& x) { return x.AddToChildContent("b", 4); }, true, "a(b[4])"},
      {"<a><b/><c/><b/></a>", [](ClsXml& x) { return x.RemoveChild("b"); }, true, "a(c)"},
      {"<a><b/></a>", [](ClsXml& x) { return x.RemoveChild("B"); }, false, "a(b)"},
      {"<a><b/><c/></a>", [](ClsXml& x) { return x.RemoveChildByIndex(1); }, true, "a(b)"},
      {"<a><b/></a>", [](ClsXml& x) { return x.RemoveChildByIndex(1); }, false, "a(b)"},
      {"<a><b/></a>", [](ClsXml& x) { return x.RemoveChildByIndex(-1); }, false, "a(b)"},
      {"<a><b>x</b><c>y</c><d>x</d></a>", [](ClsXml& x) { return x.RemoveChildWithContent("x"); },
       true, "a(c[y])"},
      {"<a>x<b/></a>", [](ClsXml& x) { return x.RemoveAllChildren(); }, true, "a[x]"},
  });
}

TEST(ClsXmlTest, Sorts) {
  constexpr char kRecords[] =
      "<a><r n='10'><k v='b'>2</k></r><r n='9'><k v='a'>10</k></r><q n='B'/><q n='a'/></a>";
  expectEdits({
      {"<a><c/><b/><c>1</c></a>", [](ClsXml& x) { return x.SortByTag(true); }, true, "a(b,c,c[1])"},
      {"<a><c>1</c><c>B</c><c>a</c></a>", [](ClsXml& x) { return x.SortByContent(false); }, true,
       "a(c[a],c[B],c[1])"},
      {"<a><c>B</c><c>a</c></a>",
       [](ClsXml& x) { return x.set_SortCaseInsensitive(true), x.SortByContent(true); }, true,
       "a(c[a],c[B])"},
      {kRecords, [](ClsXml& x) { return x.SortByAttribute("n", true); }, true,
       "a(r{n=10}(k[2]{v=b}),r{n=9}(k[10]{v=a}),q{n=B},q{n=a})"},
      {kRecords, [](ClsXml& x) { return x.SortByAttributeInt("n", true); }, true,
       "a(q{n=B},q{n=a},r{n=9}(k[10]{v=a}),r{n=10}(k[2]{v=b}))"},
      {kRecords, [](ClsXml& x) { return x.SortRecordsByContent("k", false); }, true,
       "a(r{n=10}(k[2]{v=b}),r{n=9}(k[10]{v=a}),q{n=B},q{n=a})"},
      {kRecords, [](ClsXml& x) { return x.SortRecordsByContentInt("k", false); }, true,
       "a(r{n=9}(k[10]{v=a}),r{n=10}(k[2]{v=b}),q{n=B},q{n=a})"},
      {kRecords, [](ClsXml& x) { return x.SortRecordsByAttribute("k", "v", true); }, true,
       "a(q{n=B},q{n=a},r{n=9}(k[10]{v=a}),r{n=10}(k[2]{v=b}))"},
  });
}

TEST(ClsXmlTest, TextsThatAreAskedFor) {
  ClsXml x;
  load(x, "<a p='1' q='2'>x<b>y</b><c><b>z</b></c><s><b>-</b></s></a>");
  struct {
    string name;
    std::function<bool(XString&)> method;
    string expected;  // "?" for a failure
  } const cases[] = {
      {"name", [&](XString& o) { return x.GetAttributeNameX(1, o); }, "q"},
      {"name beyond", [&](XString& o) { return x.GetAttributeNameX(2, o); }, "?"},
      {"value", [&](XString& o) { return x.GetAttributeValueX(0, o); }, "1"},
      {"value before", [&](XString& o) { return x.GetAttributeValueX(-1, o); }, "?"},
      {"named", [&](XString& o) { return x.GetAttrValueX("q", o); }, "2"},
      {"named by case", [&](XString& o) { return x.GetAttrValueX("Q", o); }, "?"},
      {"child tag", [&](XString& o) { return x.GetChildTagX(1, o); }, "c"},
      {"child tag by index", [&](XString& o) { return x.GetChildTagByIndexX(3, o); }, "?"},
      {"child content", [&](XString& o) { return x.GetChildContentX("b", o); }, "y"},
      {"child content of none", [&](XString& o) { return x.GetChildContentX("d", o); }, "?"},
      {"child content empty", [&](XString& o) { return x.GetChildContentX("c", o); }, ""},
      {"child content by index", [&](XString& o) { return x.GetChildContentByIndexX(0, o); }, "y"},
      {"tag content", [&](XString& o) { return x.TagContentX("b", o); }, "y"},
      {"tag content of itself", [&](XString& o) { return x.TagContentX("a", o); }, "?"},
      {"accumulated", [&](XString& o) { return x.AccumulateTagContentX("b", "", o); }, "yz-"},
      {"skipping", [&](XString& o) { return x.AccumulateTagContentX("b", "k||s", o); }, "yz"},
      {"skipping all", [&](XString& o) { return x.AccumulateTagContentX("*", "b|c|s", o); }, ""},
      {"path", [&](XString& o) { return x.ZantrelPathX("c|b", o); }, "z"},
      {"path to nowhere", [&](XString& o) { return x.ZantrelPathX("c|d", o); }, "?"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(given(one.method), one.expected) << one.name;
    EXPECT_EQ(x.get_LastMethodSuccess(), one.expected != "?") << one.name;
  }
}

TEST(ClsXmlTest, QuestionsAndNumbers) {
  ClsXml x;
  load(x, "<Tag p='7' q='x'>12<b>true</b><c> 99 </c><b>no</b><d>0</d><e>YES</e></Tag>");
  struct {
    string name;
    std::function<int(ClsXml&)> ask;
    int expected;
    bool succeeds = true;
  } const cases[] = {
      {"TagEquals", [](ClsXml& o) { return o.TagEquals("tAG"); }, 1},
      {"TagEquals other", [](ClsXml& o) { return o.TagEquals("tA"); }, 0},
      {"ContentMatches", [](ClsXml& o) { return o.ContentMatches("1*", true); }, 1},
      {"ContentMatches part", [](ClsXml& o) { return o.ContentMatches("1", true); }, 0},
      {"HasAttribute", [](ClsXml& o) { return o.HasAttribute("p"); }, 1},
      {"HasAttribute other", [](ClsXml& o) { return o.HasAttribute("P"); }, 0},
      {"HasAttrWithValue", [](ClsXml& o) { return o.HasAttrWithValue("q", "x"); }, 1},
      {"HasAttrWithValue other", [](ClsXml& o) { return o.HasAttrWithValue("q", "7"); }, 0},
      {"AttrInt", [](ClsXml& o) { return o.GetAttrValueInt("p"); }, 7},
      {"AttrInt of text", [](ClsXml& o) { return o.GetAttrValueInt("q"); }, 0},
      {"AttrInt of none", [](ClsXml& o) { return o.GetAttrValueInt("r"); }, 0, false},
      {"AttributeInt", [](ClsXml& o) { return o.GetAttributeValueInt(0); }, 7},
      {"AttributeInt beyond", [](ClsXml& o) { return o.GetAttributeValueInt(2); }, 0, false},
      {"ChildInt", [](ClsXml& o) { return o.GetChildIntValue("c"); }, 99},
      {"ChildInt of none", [](ClsXml& o) { return o.GetChildIntValue("z"); }, 0, false},
      {"ChildBool", [](ClsXml& o) { return o.GetChildBoolValue("b"); }, 1},
      {"ChildBool number", [](ClsXml& o) { return o.GetChildBoolValue("c"); }, 1},
      {"ChildBool zero", [](ClsXml& o) { return o.GetChildBoolValue("d"); }, 0},
      {"ChildBool yes", [](ClsXml& o) { return o.GetChildBoolValue("e"); }, 1},
      {"ChildBool of none", [](ClsXml& o) { return o.GetChildBoolValue("z"); }, 0, false},
      {"HasChild", [](ClsXml& o) { return o.HasChildWithTag("c"); }, 1},
      {"HasChild other", [](ClsXml& o) { return o.HasChildWithTag("C"); }, 0},
      {"HasContent", [](ClsXml& o) { return o.HasChildWithContent("no"); }, 1},
      {"HasContent other", [](ClsXml& o) { return o.HasChildWithContent("12"); }, 0},
      {"HasBoth", [](ClsXml& o) { return o.HasChildWithTagAndContent("b", "no"); }, 1},
      {"HasBoth apart", [](ClsXml& o) { return o.HasChildWithTagAndContent("d", "no"); }, 0},
      {"Count", [](ClsXml& o) { return o.NumChildrenHavingTag("b"); }, 2},
      {"Count none", [](ClsXml& o) { return o.NumChildrenHavingTag("z"); }, 0},
      {"Matches", [](ClsXml& o) { return o.ChildContentMatches("b", "N*", false); }, 1},
      {"Matches by case", [](ClsXml& o) { return o.ChildContentMatches("b", "N*", true); }, 0},
      {"NumChildren", [](ClsXml& o) { return o.NumChildrenHavingTag(""); }, 5},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(one.ask(x), one.expected) << one.name;
    EXPECT_EQ(x.get_LastMethodSuccess(), one.succeeds) << one.name;
  }
  EXPECT_EQ(x.get_ContentInt(), 12);
  EXPECT_EQ(x.get_NumAttributes(), 2);
  EXPECT_EQ(x.get_NumChildren(), 5);
}

TEST(ClsXmlTest, AFailureSaysWhat) {
  ClsXml x, out;
  load(x, "<a p='1'><b/></a>");
  struct {
    std::function<bool()> method;
    string words;
  } const cases[] = {
      {[&] { return x.GetChild2(4); }, "The index is out of range."},
      {[&] { return x.GetChild2(4); }, "count: 1"},
      {[&] { return x.GetChildWithTagX("z", out); }, "tag: z"},
      {[&] { return x.GetParent2(); }, "The element is the root of its tree."},
      {[&] { return x.AddAttribute("p", ""); }, "name: p"},
      {[&] { return x.LoadXml("text", nullptr); }, "The text has no element."},
      {[&] { return x.LoadXmlFile(XString("/nowhere/x.xml"), nullptr); }, "Failed to open file."},
  };
  for (const auto& one : cases) {
    EXPECT_FALSE(one.method());
    EXPECT_NE(logOf(x).find(one.words), string::npos) << logOf(x);
  }
}

}  // namespace
}  // namespace zantrel::test

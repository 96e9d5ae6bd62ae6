// Handles: where they go, and what becomes of them when trees change under them.

#include <array>

#include "xml/cls_xml_test_support.h"

namespace zantrel::test {
namespace {

constexpr char kTree[] = "<a><b>1<c/><d/></b><e>2</e><b>3</b></a>";

TEST(ClsXmlHandleTest, EachWayLeadsToTheSameElementByBothForms) {
  struct {
    const char* name;
    std::function<bool(ClsXml&, ClsXml&)> give;
    std::function<bool(ClsXml&)> move;
    const char* from;  // a path to where it starts
    const char* tag;   // null for a failure
  } const cases[] = {
      {"GetChild", [](ClsXml& x, ClsXml& o) { return x.GetChildX(1, o); },
       [](ClsXml& x) { return x.GetChild2(1); }, "$", "e"},
      {"GetChild", [](ClsXml& x, ClsXml& o) { return x.GetChildX(3, o); },
       [](ClsXml& x) { return x.GetChild2(3); }, "$", nullptr},
      {"FirstChild", [](ClsXml& x, ClsXml& o) { return x.FirstChildX(o); },
       [](ClsXml& x) { return x.FirstChild2(); }, "b|$", "c"},
      {"FirstChild", [](ClsXml& x, ClsXml& o) { return x.FirstChildX(o); },
       [](ClsXml& x) { return x.FirstChild2(); }, "e|$", nullptr},
      {"LastChild", [](ClsXml& x, ClsXml& o) { return x.LastChildX(o); },
       [](ClsXml& x) { return x.LastChild2(); }, "b|$", "d"},
      {"NextSibling", [](ClsXml& x, ClsXml& o) { return x.NextSiblingX(o); },
       [](ClsXml& x) { return x.NextSibling2(); }, "b|$", "e"},
      {"NextSibling", [](ClsXml& x, ClsXml& o) { return x.NextSiblingX(o); },
       [](ClsXml& x) { return x.NextSibling2(); }, "$", nullptr},
      {"NextSibling", [](ClsXml& x, ClsXml& o) { return x.NextSiblingX(o); },
       [](ClsXml& x) { return x.NextSibling2(); }, "[2]|$", nullptr},
      {"PreviousSibling", [](ClsXml& x, ClsXml& o) { return x.PreviousSiblingX(o); },
       [](ClsXml& x) { return x.PreviousSibling2(); }, "[2]|$", "e"},
      {"PreviousSibling", [](ClsXml& x, ClsXml& o) { return x.PreviousSiblingX(o); },
       [](ClsXml& x) { return x.PreviousSibling2(); }, "[0]|$", nullptr},
      {"GetParent", [](ClsXml& x, ClsXml& o) { return x.GetParentX(o); },
       [](ClsXml& x) { return x.GetParent2(); }, "b|c|$", "b"},
      {"GetRoot", [](ClsXml& x, ClsXml& o) { return x.GetRootX(o); },
       [](ClsXml& x) { return x.GetRoot2(); }, "b|c|$", "a"},
      {"GetNth", [](ClsXml& x, ClsXml& o) { return x.GetNthChildWithTagX("b", 1, o); },
       [](ClsXml& x) { return x.GetNthChildWithTag2("b", 1); }, "$", "b"},
      {"GetNth", [](ClsXml& x, ClsXml& o) { return x.GetNthChildWithTagX("b", -1, o); },
       [](ClsXml& x) { return x.GetNthChildWithTag2("b", -1); }, "$", nullptr},
      {"FindChild", [](ClsXml& x, ClsXml& o) { return x.FindChildX("e", o); },
       [](ClsXml& x) { return x.FindChild2("e"); }, "$", "e"},
      {"SearchForTag", [](ClsXml& x, ClsXml& o) { return x.SearchForTagX(x, "d", o); },
       [](ClsXml& x) { return x.SearchForTag2(x, "d"); }, "$", "d"},
      {"SearchForTag", [](ClsXml& x, ClsXml& o) { return x.SearchForTagX(x, "a", o); },
       [](ClsXml& x) { return x.SearchForTag2(x, "a"); }, "$", nullptr},
      {"SearchForContent",
       [](ClsXml& x, ClsXml& o) { return x.SearchForContentX(x, "e", "2", true, o); },
       [](ClsXml& x) { return x.SearchForContent2(x, "e", "2", true); }, "$", "e"},
      {"SearchAllForContent",
       [](ClsXml& x, ClsXml& o) { return x.SearchAllForContentX(x, "2", true, o); },
       [](ClsXml& x) { return x.SearchAllForContent2(x, "2", true); }, "$", "e"},
      {"SearchForAttribute",
       [](ClsXml& x, ClsXml& o) { return x.SearchForAttributeX(x, "", "p", "*", true, o); },
       [](ClsXml& x) { return x.SearchForAttribute2(x, "", "p", "*", true); }, "$", nullptr},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(std::string(one.name) + " from " + one.from);
    ClsXml xml, out;
    load(xml, kTree);
    XString unused;
    ASSERT_TRUE(xml.ZantrelPathX(one.from, unused));
    const std::string start = outlineOf(xml);
    EXPECT_EQ(one.give(xml, out), one.tag != nullptr);
    EXPECT_EQ(outlineOf(xml), start);
    if (one.tag != nullptr) {
      EXPECT_EQ(tagOf(out), one.tag);
      EXPECT_EQ(out.get_TreeId(), xml.get_TreeId());
    }
    EXPECT_EQ(one.move(xml), one.tag != nullptr);
    if (one.tag != nullptr) {
      EXPECT_EQ(outlineOf(xml), outlineOf(out));
    } else {
      EXPECT_EQ(outlineOf(xml), start);
    }
  }
}

TEST(ClsXmlHandleTest, AWalkFindsAllMatchesInTurn) {
  ClsXml xml, after, found;
  load(xml, "<a><b i='1'><b i='2'/></b><c><b i='3'/></c></a>");
  std::string order;
  ASSERT_TRUE(xml.GetSelfX(after));
  while (xml.SearchForAttributeX(after, "b", "i", "*", true, found)) {
    order += given([&](XString& out) { return found.GetAttrValueX("i", out); });
    ASSERT_TRUE(found.GetSelfX(after));
  }
  EXPECT_EQ(order, "123");
}

TEST(ClsXmlHandleTest, RecordsAreFoundAmongSiblings) {
  ClsXml xml, found;
  load(xml, "<t><r><n>x</n></r><r><n>Bob</n></r><r><m>Bob</m></r><r><n>bo</n></r></t>");
  ASSERT_TRUE(xml.FirstChild2());
  ASSERT_TRUE(xml.FindNextRecordX("n", "b*", false, found));
  EXPECT_EQ(outlineOf(found), "r(n[Bob])");
  ASSERT_TRUE(found.FindNextRecordX("n", "b*", false, found));
  EXPECT_EQ(outlineOf(found), "r(n[bo])");
  EXPECT_FALSE(found.FindNextRecordX("n", "b*", false, found));
}

TEST(ClsXmlHandleTest, ALoadMovesThisHandleOnly) {
  ClsXml xml, child;
  load(xml, kTree);
  ASSERT_TRUE(xml.GetChildX(1, child));
  ASSERT_TRUE(child.LoadXml("<z/>", nullptr));
  EXPECT_EQ(outlineOf(child), "z");
  EXPECT_NE(child.get_TreeId(), xml.get_TreeId());
  EXPECT_EQ(xml.get_NumChildren(), 3);
  EXPECT_FALSE(child.LoadXml("no element", nullptr));
  EXPECT_EQ(outlineOf(child), "z");
}

TEST(ClsXmlHandleTest, WhatIsRemovedUnderAHandleBecomesATree) {
  ClsXml xml, inner;
  load(xml, kTree);
  XString unused;
  ASSERT_TRUE(xml.GetSelfX(inner));
  ASSERT_TRUE(inner.ZantrelPathX("b|c|$", unused));
  ASSERT_TRUE(xml.RemoveAllChildren());
  EXPECT_EQ(outlineOf(xml), "a");
  EXPECT_EQ(tagOf(inner), "c");
  ASSERT_TRUE(inner.GetRoot2());
  EXPECT_EQ(outlineOf(inner), "b[1](c,d)");
  EXPECT_NE(inner.get_TreeId(), xml.get_TreeId());
}

TEST(ClsXmlHandleTest, ATreeLivesAsLongAsAnyHandle) {
  ClsXml child;
  {
    ClsXml xml;
    load(xml, kTree);
    ASSERT_TRUE(xml.GetChildX(0, child));
  }
  EXPECT_EQ(outlineOf(child), "b[1](c,d)");
  ASSERT_TRUE(child.GetParent2());
  EXPECT_EQ(child.get_NumChildren(), 3);
}

TEST(ClsXmlHandleTest, AMovedSubtreeTakesItsHandlesAlong) {
  ClsXml target, inner;
  load(target, "<t/>");
  {
    ClsXml source;
    load(source, kTree);
    ASSERT_TRUE(source.GetChildX(0, inner));
    ASSERT_TRUE(inner.FirstChild2());
    ASSERT_TRUE(source.GetChild2(0));
    ASSERT_TRUE(target.AddChildTree(source));
    EXPECT_EQ(source.get_TreeId(), target.get_TreeId());
    ASSERT_TRUE(source.GetParent2());
    EXPECT_EQ(outlineOf(source), "t(b[1](c,d))");
  }
  EXPECT_EQ(inner.get_TreeId(), target.get_TreeId());
  ASSERT_TRUE(inner.NewChild2("n", ""));
  EXPECT_EQ(outlineOf(target), "t(b[1](c(n),d))");
}

TEST(ClsXmlHandleTest, SmallDocumentsGatherWithTheirHandles) {
  ClsXml list;
  std::array<ClsXml, 3> records;
  for (ClsXml& record : records) {
    record.set_Tag("r");
    ASSERT_TRUE(list.AddChildTree(record));
    ASSERT_TRUE(record.NewChild2("x", "1"));
  }
  EXPECT_EQ(outlineOf(list), "nothing(r(x[1]),r(x[1]),r(x[1]))");
}

TEST(ClsXmlHandleTest, ATowerOfSmallDocumentsIsBuiltInLinearTime) {
  ClsXml root, top;
  ASSERT_TRUE(root.GetSelfX(top));
  for (int i = 0; i < 100000; ++i) {
    ClsXml next;
    ASSERT_TRUE(top.AddChildTree(next));
    ASSERT_TRUE(next.GetSelfX(top));
  }
  EXPECT_FALSE(top.AddChildTree(root));
  int depth = 0;
  while (root.FirstChild2()) ++depth;
  EXPECT_EQ(depth, 100000);
}

TEST(ClsXmlHandleTest, ExtractedAndRemovedElementsAreTreesOfTheirOwn) {
  ClsXml xml, out;
  load(xml, kTree);
  ASSERT_TRUE(xml.ExtractChildByIndexX(1, out));
  EXPECT_EQ(writtenBy(out), "<e>2</e>\r\n");
  ASSERT_TRUE(xml.ExtractChildByNameX("b", out));
  EXPECT_EQ(outlineOf(out), "b[1](c,d)");
  EXPECT_FALSE(out.GetParent2());
  EXPECT_EQ(outlineOf(xml), "a(b[3])");
  EXPECT_FALSE(xml.ExtractChildByNameX("q", out));
  EXPECT_FALSE(xml.ExtractChildByIndexX(-1, out));
  EXPECT_FALSE(xml.RemoveFromTree());
  ASSERT_TRUE(out.FirstChild2());
  ASSERT_TRUE(out.RemoveFromTree());  // what is above it has no handle left and ends
  EXPECT_FALSE(out.GetParent2());
  EXPECT_EQ(outlineOf(out), "c");
}

TEST(ClsXmlHandleTest, CyclesAreRefused) {
  ClsXml xml, child;
  load(xml, kTree);
  ASSERT_TRUE(xml.GetChildX(0, child));
  EXPECT_FALSE(xml.AddChildTree(xml));
  EXPECT_FALSE(child.AddChildTree(xml));
  EXPECT_FALSE(child.SwapTree(xml));
  EXPECT_FALSE(xml.SwapTree(child));
  EXPECT_NE(logOf(xml).find("above or below"), std::string::npos);
  ASSERT_TRUE(xml.AddChildTree(child));  // within a tree it moves to the end
  EXPECT_EQ(outlineOf(xml), "a(e[2],b[3],b[1](c,d))");
}

TEST(ClsXmlHandleTest, SwapsExchangeWhatElementsHold) {
  ClsXml xml, other, first, inner;
  load(xml, kTree);
  load(other, "<z p='1'>9<y/></z>");
  ASSERT_TRUE(xml.GetChildX(0, first));
  ASSERT_TRUE(first.GetChildX(0, inner));
  ASSERT_TRUE(first.SwapNode(xml));  // one below the other: only what they hold themselves
  EXPECT_EQ(outlineOf(xml), "b[1](a(c,d),e[2],b[3])");
  ASSERT_TRUE(first.SwapTree(other));
  EXPECT_EQ(outlineOf(xml), "b[1](z[9]{p=1}(y),e[2],b[3])");
  EXPECT_EQ(outlineOf(other), "a(c,d)");
  EXPECT_EQ(tagOf(first), "z");
  EXPECT_EQ(inner.get_TreeId(), other.get_TreeId());
  ASSERT_TRUE(xml.SwapTree(xml));
  EXPECT_EQ(xml.get_NumChildren(), 3);
}

TEST(ClsXmlHandleTest, WhatWasSwappedOutlivesTheOtherDocument) {
  ClsXml xml;
  load(xml, "<a><b/></a>");
  {
    ClsXml other;
    load(other, "<a p='value'>content<c>inner</c></a>");
    ASSERT_TRUE(xml.SwapTree(other));
    ASSERT_TRUE(other.LoadXml("<next/>", nullptr));
  }
  ClsXml reused;
  load(reused, "<x>memory taken again</x>");
  EXPECT_EQ(outlineOf(xml), "a[content]{p=value}(c[inner])");
}

TEST(ClsXmlHandleTest, CopiesAreIndependent) {
  ClsXml xml, other, child;
  load(xml, "<?xml version='1.0'?><!DOCTYPE a><a p='1'>x<b/></a>");
  ASSERT_TRUE(other.Copy(xml));
  EXPECT_EQ(writtenBy(other), writtenBy(xml));
  xml.set_Tag("changed");
  ASSERT_TRUE(other.GetChildX(0, child));
  ASSERT_TRUE(other.Copy(child));  // from below itself
  EXPECT_EQ(outlineOf(other), "b");
  EXPECT_EQ(outlineOf(child), "b");
  ASSERT_TRUE(child.GetRoot2());
  EXPECT_EQ(tagOf(child), "b");
  ASSERT_TRUE(xml.Copy(xml));
  EXPECT_EQ(outlineOf(xml), "changed[x]{p=1}(b)");
}

TEST(ClsXmlHandleTest, NewChildrenComeWithHandles) {
  ClsXml xml, child;
  ASSERT_TRUE(xml.NewChildX("b", "1", child));
  EXPECT_EQ(outlineOf(child), "b[1]");
  ASSERT_TRUE(xml.FindOrAddNewChildX("b", child));
  ASSERT_TRUE(xml.FindOrAddNewChildX("c", child));
  EXPECT_EQ(outlineOf(xml), "nothing(b[1],c)");
}

TEST(ClsXmlHandleTest, AMillionSiblingsAndLevelsAreWalkedInLinearTime) {
  constexpr int kCount = 300000;
  std::string wide = "<a>", deep;
  for (int i = 0; i < kCount; ++i) {
    wide += "<b/>";
    deep += "<b>";
  }
  ClsXml xml, child;
  load(xml, wide + "</a>");
  ASSERT_TRUE(xml.FirstChild2());
  int count = 1;
  while (xml.NextSibling2()) ++count;
  EXPECT_EQ(count, kCount);
  load(xml, deep);
  for (count = 0; xml.FirstChildX(child); ++count) ASSERT_TRUE(xml.FirstChild2());
  EXPECT_EQ(count, kCount - 1);
  ASSERT_TRUE(xml.RemoveFromTree());
}

TEST(ClsXmlHandleTest, ManyChildrenOfATagAreRemovedAtOnce) {
  std::string text = "<a>";
  for (int i = 0; i < 200000; ++i) text += "<b/><c/>";
  ClsXml xml;
  load(xml, text + "</a>");
  ASSERT_TRUE(xml.RemoveChild("b"));
  EXPECT_EQ(xml.get_NumChildren(), 200000);
  EXPECT_EQ(xml.NumChildrenHavingTag("c"), 200000);
  for (int i = 0; i < 100000; ++i) ASSERT_TRUE(xml.AppendToContent("0123456789"));
  XString content;
  xml.get_Content(content);
  EXPECT_EQ(content.getSizeUtf8(), 1000000U);
}

TEST(ClsXmlHandleTest, SearchesBeginInTheirOwnSubtreeOnly) {
  ClsXml xml, second, other, found;
  load(xml, "<a><b/><e><b/></e></a>");
  load(other, "<b><b/></b>");
  ASSERT_TRUE(xml.GetChildX(1, second));
  EXPECT_FALSE(xml.SearchForTagX(other, "b", found));
  expectLogged(xml, "No element was found.");
  EXPECT_FALSE(second.SearchForTagX(xml, "b", found));
  EXPECT_TRUE(xml.SearchForTagX(second, "b", found));
}

// Quadratic time would be minutes.
TEST(ClsXmlHandleTest, SearchAfterSearchGoesThroughADeepTree) {
  constexpr int kDepth = 200000;
  std::string text;
  for (int i = 0; i < kDepth; ++i) text += "<a>";
  ClsXml xml, at;
  load(xml, text);
  ASSERT_TRUE(xml.GetSelfX(at));
  int count = 0;
  for (ClsXml next; xml.SearchForTagX(at, "a", next); ++count) ASSERT_TRUE(next.GetSelfX(at));
  EXPECT_EQ(count, kDepth - 1);
}

// Quadratic time would be minutes.
TEST(ClsXmlHandleTest, ChildrenAreTakenFromTheFrontLikeFromAQueue) {
  constexpr int kCount = 300000;
  std::string text = "<a>";
  for (int i = 0; i < kCount; ++i) text += "<b/>";
  ClsXml xml, child;
  load(xml, text + "</a>");
  for (int i = 0; i < kCount; ++i) {
    ASSERT_TRUE(xml.NewChildInt2("c", i));
    if (i % 3 == 0) {
      ASSERT_TRUE(xml.RemoveChildByIndex(0));
    } else if (i % 3 == 1) {
      ASSERT_TRUE(xml.ExtractChildByNameX("b", child));
    } else {
      ASSERT_TRUE(xml.FirstChildX(child));
      ASSERT_TRUE(child.RemoveFromTree());
    }
  }
  ASSERT_EQ(xml.get_NumChildren(), kCount);
  ASSERT_TRUE(xml.GetChildX(kCount - 1, child));
  EXPECT_EQ(child.get_ContentInt(), kCount - 1);
  ASSERT_TRUE(xml.FirstChildX(child));
  EXPECT_EQ(outlineOf(child), "c[0]");
  ASSERT_TRUE(child.NextSibling2());
  EXPECT_EQ(child.get_ContentInt(), 1);
}

}  // namespace
}  // namespace zantrel::test

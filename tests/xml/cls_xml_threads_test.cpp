// Handles in several threads: on one tree, and on trees that become one.

#include <atomic>
#include <thread>

#include "xml/cls_xml_test_support.h"

namespace zantrel::test {
namespace {

void inThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

TEST(ClsXmlThreadsTest, HandlesOnOneTreeEditItAtOnce) {
  constexpr int kThreads = 4;
  constexpr int kTimes = 200;
  ClsXml xml;
  std::vector<ClsXml> handles(kThreads);
  for (ClsXml& handle : handles) ASSERT_TRUE(xml.GetSelfX(handle));
  inThreads(kThreads, [&](int t) {
    ClsXml& own = handles[static_cast<std::size_t>(t)];
    ClsXml child;
    for (int i = 0; i < kTimes; ++i) {
      EXPECT_TRUE(own.NewChildX("c", std::to_string(i), child));
      EXPECT_TRUE(child.AddToContent(1));
      EXPECT_TRUE(child.UpdateAttributeInt("t", t));
      own.NumChildrenHavingTag("c");
      if (i % 10 == 0) {
        EXPECT_FALSE(writtenBy(own).empty());
      }
      if (i % 2 == 0) {
        EXPECT_TRUE(child.RemoveFromTree());
      }
    }
  });
  EXPECT_EQ(xml.get_NumChildren(), kThreads * kTimes / 2);
}

TEST(ClsXmlThreadsTest, TwoThreadsMoveTreesAgainstEachOther) {
  for (int round = 0; round < 200; ++round) {
    ClsXml a, b;
    // Of the two one comes below the other; that one's attempt then is a cycle.
    std::atomic<int> moved{0};
    inThreads(2, [&](int t) { moved += (t == 0 ? a.AddChildTree(b) : b.AddChildTree(a)) ? 1 : 0; });
    EXPECT_EQ(moved, 1);
    EXPECT_EQ(a.get_TreeId(), b.get_TreeId());
  }
}

TEST(ClsXmlThreadsTest, EachThreadUsesTheOthersHandle) {
  ClsXml a, b;
  load(a, "<a><x/></a>");
  load(b, "<b><y/></b>");
  inThreads(4, [&](int t) {
    ClsXml& own = t % 2 == 0 ? a : b;
    ClsXml& other = t % 2 == 0 ? b : a;
    ClsXml found;
    for (int i = 0; i < 200; ++i) {
      EXPECT_TRUE(own.SwapNode(other));
      EXPECT_TRUE(own.SwapTree(other));
      EXPECT_FALSE(own.SearchForTagX(other, "none", found));
      if (i % 20 == 0) {
        EXPECT_TRUE(own.LoadXml("<n><m/></n>", nullptr));
      }
      if (i % 5 == 0) {
        EXPECT_TRUE(own.Copy(other));
      }
    }
  });
  EXPECT_NE(a.get_TreeId(), b.get_TreeId());
}

TEST(ClsXmlThreadsTest, ManyTreesGatherInOne) {
  constexpr int kThreads = 4;
  constexpr int kTimes = 30;
  // Too large to be copied: their stores are joined.
  std::string text = "<d>";
  for (int i = 0; i < 1000; ++i) text += "<e/>";
  ClsXml list;
  inThreads(kThreads, [&](int) {
    for (int i = 0; i < kTimes; ++i) {
      ClsXml record, inner;
      load(record, text + "</d>");
      ASSERT_TRUE(record.GetChildX(7, inner));
      ASSERT_TRUE(list.AddChildTree(record));
      ASSERT_TRUE(inner.NewChild2("x", ""));
    }
  });
  EXPECT_EQ(list.get_NumChildren(), kThreads * kTimes);
  XString all;
  ASSERT_TRUE(list.AccumulateTagContentX("x", "", all));
  ASSERT_TRUE(list.RemoveAllChildren());
}

}  // namespace
}  // namespace zantrel::test

// Nodes that move, are copied and end, and the stores that keep them.

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

constexpr char kText[] = "<a p='1'>x<b><c>y</c></b><d/></a>";

TEST(XmlStoreTest, ACopyIsTheSameAndIndependent) {
  const Document document(kText);
  TreeNode* const copy = document.store().copy(&document.root());
  EXPECT_EQ(outline(*copy), outline(document.root()));
  document.root().child(0)->setTag("changed");
  document.root().editAttributes().setValue(0, "2");
  EXPECT_EQ(outline(*copy), "a[x]{p=1}(b(c[y]),d)");
  document.store().end(copy);
}

TEST(XmlStoreTest, ADeepTreeIsCopiedAndEnded) {
  std::string text;
  for (int i = 0; i < 300000; ++i) text += "<a>";
  const Document document(text);
  TreeNode* const copy = document.store().copy(&document.root());
  std::size_t count = 0;
  for (const TreeNode* node = copy; node != nullptr; node = node->next(copy)) ++count;
  EXPECT_EQ(count, 300000U);
  document.store().end(copy);
}

TEST(XmlStoreTest, EndedNodesAreUsedAgain) {
  const XmlStore::Ref store = XmlStore::create();
  TreeNode* const first = store->newNode();
  store->end(first);
  EXPECT_FALSE(first->isAlive());
  EXPECT_EQ(store->newNode(), first);
}

TEST(XmlStoreTest, AHandleKeepsAnEndedNodeFromBeingUsedAgain) {
  const XmlStore::Ref store = XmlStore::create();
  TreeNode* const node = store->newNode();
  XmlStore::hold(node);
  store->end(node);
  EXPECT_FALSE(node->isAlive());
  EXPECT_NE(store->newNode(), node);
  XmlStore::release(node);
  EXPECT_EQ(store->newNode(), node);
}

TEST(XmlStoreTest, ATreeEndsWithItsLastHandle) {
  const XmlStore::Ref store = XmlStore::create();
  TreeNode* const root = store->newNode();
  TreeNode* const child = store->newNode();
  root->appendChild(child);
  store->newTree(root);
  XmlStore::hold(child);
  XmlStore::hold(root);
  XmlStore::release(root);
  EXPECT_TRUE(root->isAlive());
  XmlStore::release(child);
  EXPECT_FALSE(root->isAlive());
  EXPECT_FALSE(child->isAlive());
}

TEST(XmlStoreTest, ASubtreeMovesIntoATreeOfAnotherStore) {
  const Document target("<r><s/></r>");
  TreeNode* moved = nullptr;
  {
    const Document source(kText);
    moved = source.store().dissolve(&source.tree());
    target.store().absorb(source.store());
    EXPECT_EQ(&source.store().current(), &target.store());
  }
  target.root().insertChild(0, moved);
  EXPECT_EQ(outline(target.root()), "r(a[x]{p=1}(b(c[y]),d),s)");
  EXPECT_EQ(target.root().child(1)->index(), 1U);
}

TEST(XmlStoreTest, AddingAndRemovingDocumentsForeverTakesNoMoreMemory) {
  const Document target("<r/>");
  std::size_t memory = 0;
  for (int i = 0; i < 2000; ++i) {
    TreeNode* added = nullptr;
    {
      const Document source(kText);
      added = source.store().dissolve(&source.tree());
      target.store().absorb(source.store());
    }
    target.root().appendChild(added);
    if (i >= 10) target.store().end(target.root().takeChild(0));
    if (i == 100) memory = target.store().memoryBytes();
  }
  EXPECT_EQ(target.store().memoryBytes(), memory);
}

TEST(XmlStoreTest, NodesExchangeWhatTheyHold) {
  const Document document("<r><a p='1'>x<c/></a><b>y</b></r>");
  document.root().child(0)->swapContent(*document.root().child(1));
  EXPECT_EQ(outline(document.root()), "r(b[y],a[x]{p=1}(c))");
  EXPECT_EQ(document.root().child(1)->child(0)->parent(), document.root().child(1));
}

TEST(XmlStoreTest, ANodeFindsItsPlaceAfterChangesBeforeIt) {
  const Document document("<r><a/><b/><c/><d/></r>");
  TreeNode& root = document.root();
  TreeNode* const last = root.child(3);
  EXPECT_EQ(last->index(), 3U);
  document.store().end(root.takeChild(0));
  EXPECT_EQ(last->index(), 2U);
  root.insertChild(0, document.store().newNode());
  root.insertChild(0, document.store().newNode());
  EXPECT_EQ(last->index(), 4U);
  EXPECT_EQ(outline(root), "r(,,b,c,d)");
}

TEST(XmlStoreTest, AnOnlyChildTakesOthersBesideIt) {
  const Document document("<r><a><b><c/></b></a></r>");
  TreeNode& root = document.root();
  root.insertChild(0, document.store().newNode());
  root.appendChild(document.store().newNode());
  EXPECT_EQ(outline(root), "r(,a(b(c)),)");
  TreeNode* const only = root.child(1)->takeChild(0);
  EXPECT_EQ(outline(root), "r(,a,)");
  root.child(1)->appendChild(document.store().newNode());
  root.child(1)->swapContent(*only);
  EXPECT_EQ(outline(root), "r(,b(c),)");
  EXPECT_EQ(root.child(1)->child(0)->parent(), root.child(1));
  document.store().end(only);
}

TEST(XmlStoreTest, AParsedNodeIsSmall) {
  std::string text = "<list>";
  for (int i = 0; i < 10000; ++i) text += "<name>value</name>";
  const Document document(text + "</list>");
  const std::size_t perNode = (document.store().memoryBytes() - text.size()) / 10001;
  EXPECT_LT(perNode, 90U);
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_sort.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

using Of = XmlSortKey::Of;

TEST(XmlSortTest, SortsChildren) {
  struct {
    std::string children;
    XmlSortKey key;
    std::string sorted;
  } const cases[] = {
      {"<b/><a/><C/>", {}, "C,a,b"},
      {"<b/><a/><C/>", {.ascending = false}, "b,a,C"},
      {"<b/><a/><C/>", {.ignoreCase = true}, "a,b,C"},
      {"<b>x<d/><c/></b><a/>", {}, "a,b[x](d,c)"},  // not what is below them
      {"<x>b</x><x>a</x><x/><x>aa</x>", {.of = Of::Content}, "x,x[a],x[aa],x[b]"},
      {"<x>12345678b</x><x>12345678</x><x>12345678a</x><x>1234567</x>",
       {.of = Of::Content},
       "x[1234567],x[12345678],x[12345678a],x[12345678b]"},
      {"<x>10</x><x>9</x><x>-1</x>", {.of = Of::Content}, "x[-1],x[10],x[9]"},
      {"<x>10</x><x>9</x><x> -1.5</x><x>ten</x><x>+2</x>",
       {.of = Of::Content, .numeric = true},
       "x[ten],x[ -1.5],x[+2],x[9],x[10]"},
      {"<x>99999999999999999999</x><x>-99999999999999999999</x><x>5000000000</x>",
       {.of = Of::Content, .numeric = true},
       "x[-99999999999999999999],x[5000000000],x[99999999999999999999]"},
      {"<a k='2'/><b/><c k='10'/><d k=''/>",
       {.of = Of::Attribute, .attribute = "k"},
       "b,d{k=},c{k=10},a{k=2}"},
      {"<a k='2'/><b/><c k='10'/><d k=''/>",
       {.of = Of::Attribute, .attribute = "k", .numeric = true},
       "b,d{k=},a{k=2},c{k=10}"},
      {"<a k='2'/><b/><c k='10'/>",
       {.of = Of::Attribute, .attribute = "k", .numeric = true, .ascending = false},
       "c{k=10},a{k=2},b"},
      {"<r><n>b</n></r><r><n>a</n><n>c</n></r><r/>",
       {.of = Of::Content, .recordTag = "n"},
       "r,r(n[a],n[c]),r(n[b])"},
      {"<r><n>9</n></r><r><n>10</n></r>",
       {.of = Of::Content, .recordTag = "n", .numeric = true, .ascending = false},
       "r(n[10]),r(n[9])"},
      {"<r><n k='b'/></r><r k='0'><n k='A'/></r>",
       {.of = Of::Attribute, .attribute = "k", .recordTag = "n", .ignoreCase = true},
       "r{k=0}(n{k=A}),r(n{k=b})"},
      {"<x>\xC3\xA9</x><x>\xC3\x88</x><x>\xC3\x89z</x>",  // é, È, Éz
       {.of = Of::Content, .ignoreCase = true},
       "x[\xC3\x88],x[\xC3\xA9],x[\xC3\x89z]"},
      {"<b k='1'/><a k='2'/><b k='3'/><a k='4'/>", {}, "a{k=2},a{k=4},b{k=1},b{k=3}"},
      {"<a k='1'/><b k='2'/><a k='3'/><b k='4'/>",
       {.ascending = false},
       "b{k=2},b{k=4},a{k=1},a{k=3}"},
  };
  for (const auto& one : cases) {
    const Document document("<r>" + one.children + "</r>", false);
    sortChildren(document.root(), one.key);
    EXPECT_EQ(outline(document.root()), "r(" + one.sorted + ")");
  }
}

TEST(XmlSortTest, ANodeWithoutChildrenStaysSo) {
  const Document document("<r>x</r>");
  sortChildren(document.root(), {});
  EXPECT_EQ(outline(document.root()), "r[x]");
}

TEST(XmlSortTest, SiblingsKnowTheirNewPlaces) {
  std::string text = "<r>";
  constexpr std::size_t kCount = 200000;
  for (std::size_t i = 0; i < kCount; ++i) text += "<a k='" + std::to_string(kCount - i) + "'/>";
  const Document document(text + "</r>");
  sortChildren(document.root(), {.of = Of::Attribute, .attribute = "k", .numeric = true});
  const TreeNode& root = document.root();
  for (std::size_t i = 0; i < kCount; ++i) ASSERT_EQ(root.child(i)->index(), i);
  EXPECT_EQ(root.child(9)->attributes()[0].valueView(), "10");
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_search.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

constexpr char kLibrary[] =
    "<library name='Main'>"
    "<book id='1' lang='en'><title>Sea</title><year>1999</year></book>"
    "<shelf><book id='2' lang='DE'><title>See</title></book></shelf>"
    "<book id='3' lang=''><title>seaside</title><year/></book>"
    "</library>";

std::string idOf(const TreeNode& node) {
  const std::ptrdiff_t id = node.attributes().find("id");
  return id < 0 ? std::string(node.tag())
                : std::string(node.attributes()[static_cast<std::size_t>(id)].valueView());
}

// Tags, or ids where there are any, of all that is found.
std::string allFound(TreeNode* top, const XmlCriteria& criteria) {
  const XmlMatcher matcher(criteria);
  std::string found;
  for (const TreeNode* node = nullptr; (node = findNext(top, node, matcher)) != nullptr;)
    found += idOf(*node) + " ";
  return found;
}

TEST(XmlSearchTest, FindsInDocumentOrder) {
  const Document document(kLibrary);
  struct {
    XmlCriteria criteria;
    std::string found;
  } const cases[] = {
      {{.tag = "book"}, "1 2 3 "},
      {{.tag = "Book"}, ""},
      {{.tag = "library"}, "library "},
      {{.attribute = "id"}, "1 2 3 "},
      {{.tag = "*", .attribute = "name"}, "library "},
      {{.tag = "shelf", .attribute = "id"}, ""},
      {{.attribute = "ID"}, ""},
      {{.attribute = "lang", .value = "en"}, "1 "},
      {{.attribute = "lang", .value = "de"}, ""},
      {{.attribute = "lang", .value = "de", .caseSensitive = false}, "2 "},
      {{.attribute = "lang", .value = ""}, "3 "},
      {{.attribute = "lang", .value = "*e*", .caseSensitive = false}, "1 2 "},
      {{.content = "Sea"}, "title "},
      {{.content = "se*", .caseSensitive = false}, "title title title "},
      {{.tag = "year", .content = "*sea*"}, ""},
      {{.tag = "year", .content = ""}, "year "},
      {{.tag = "title", .content = "*ea*"}, "title title "},
  };
  for (const auto& one : cases)
    EXPECT_EQ(allFound(&document.root(), one.criteria), one.found)
        << one.criteria.tag << one.criteria.attribute << one.criteria.content;
}

TEST(XmlSearchTest, StaysInTheSubtree) {
  const Document document(kLibrary);
  const TreeNode& root = document.root();
  const XmlMatcher book({.tag = "book"});
  TreeNode* const shelf = root.child(1);
  EXPECT_EQ(findNext(shelf, nullptr, book), shelf->child(0));
  EXPECT_EQ(findNext(shelf, shelf, book), shelf->child(0));
  EXPECT_EQ(findNext(shelf, shelf->child(0), book), nullptr);
  TreeNode* const first = root.child(0);
  EXPECT_EQ(findNext(first, nullptr, book), first);
  EXPECT_EQ(findNext(first, first, book), nullptr);
}

TEST(XmlSearchTest, RecordsAreFoundByAChild) {
  const Document document(
      "<r><p><n>Ann</n></p><p><n>Bob</n><m>Ann</m></p><p/><q><n>x</n><n>anna</n></q></r>");
  const TreeNode& root = document.root();
  const XmlMatcher ann({.tag = "n", .content = "ann*", .caseSensitive = false});
  EXPECT_EQ(findNextRecord(root.child(0), ann), root.child(3));
  EXPECT_EQ(findNextRecord(root.child(0), XmlMatcher({.tag = "*", .content = "Ann"})),
            root.child(1));
  EXPECT_EQ(findNextRecord(root.child(3), ann), nullptr);
  EXPECT_EQ(findNextRecord(&root, ann), nullptr);
}

TEST(XmlSearchTest, ChildrenAreFoundByTag) {
  const Document document("<r><a/><b/><a><b/></a></r>");
  const TreeNode& root = document.root();
  struct {
    std::string tag;
    std::size_t which;
    const TreeNode* found;
  } const cases[] = {
      {"a", 0, root.child(0)}, {"a", 1, root.child(2)}, {"a", 2, nullptr},
      {"b", 0, root.child(1)}, {"b", 1, nullptr},       {"", 1, root.child(1)},
      {"*", 2, root.child(2)}, {"", 3, nullptr},        {"A", 0, nullptr},
  };
  for (const auto& one : cases)
    EXPECT_EQ(findChild(root, one.tag, one.which), one.found) << one.tag << one.which;
}

TEST(XmlSearchTest, ADeepTreeIsSearched) {
  std::string text;
  for (int i = 0; i < 300000; ++i) text += "<a>";
  const Document document(text + "<b>");
  const XmlMatcher matcher({.tag = "b"});
  const TreeNode* const found = findNext(&document.root(), nullptr, matcher);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(findNext(&document.root(), found, matcher), nullptr);
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <string>

#include "xml/xml_path.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {
namespace {

constexpr char kLibrary[] =
    "<library name='Main'>all of it"
    "<book id='1'><title>Sea</title></book>"
    "<shelf><book id='2'><title lang='de'>See</title></book></shelf>"
    "<book id='3'><title>Ocean</title><title>Deep</title></book>"
    "</library>";

// What a path gives, from the shelf: text, tag in brackets, or what the log says.
std::string followed(const Document& document, std::string_view path) {
  RecordedLog log;
  XmlPathTarget target;
  if (!followXmlPath(document.root().child(1), path, target, log)) return log.text();
  if (target.kind == XmlPathTarget::Kind::Node) return "<" + std::string(target.node->tag()) + ">";
  return std::string(target.text);
}

TEST(XmlPathTest, LeadsToNodesContentAndAttributes) {
  const Document document(kLibrary);
  struct {
    std::string path, result;
  } const cases[] = {
      {"book|title", "See"},
      {"book|title|*", "See"},
      {"book|title|$", "<title>"},
      {"book|title|(lang)", "de"},
      {"[0]|[0]", "See"},
      {"book[0]|[0]|..|..|$", "<shelf>"},
      {"..", "all of it"},
      {"..|*", "all of it"},
      {"..|$", "<library>"},
      {"..|(name)", "Main"},
      {"..|book|(id)", "1"},
      {"..|book[1]|(id)", "3"},
      {"..|book[1]|title[1]", "Deep"},
      {"..|[2]|[0]", "Ocean"},
      {"$", "<shelf>"},
      {"*", ""},
      {"", ""},
  };
  for (const auto& one : cases) EXPECT_EQ(followed(document, one.path), one.result) << one.path;
}

TEST(XmlPathTest, TellsTheStepThatFailed) {
  const Document document(kLibrary);
  const std::string noNode = "There is no node where a step of the path leads.";
  const std::string noAttribute = "The node that the path leads to has no such attribute.";
  const std::string malformed = "A step of the path is malformed.";
  struct {
    std::string path, reason, step;
    int number;
  } const cases[] = {
      {"Book", noNode, "Book", 1},
      {"book|title[1]", noNode, "title[1]", 2},
      {"[1]", noNode, "[1]", 1},
      {"..|..|$", noNode, "..", 2},
      {"book|(lang)", noAttribute, "(lang)", 2},
      {"()", noAttribute, "()", 1},
      {"|", malformed, "", 1},
      {"book||title", malformed, "", 2},
      {"book|", malformed, "", 2},
      {"book[", malformed, "book[", 1},
      {"book]", malformed, "book]", 1},
      {"book[]", malformed, "book[]", 1},
      {"book[-1]", malformed, "book[-1]", 1},
      {"book[ 1]", malformed, "book[ 1]", 1},
      {"book[1]x", malformed, "book[1]x", 1},
      {"book[99999999999999999999]", malformed, "book[99999999999999999999]", 1},
      {"(id", malformed, "(id", 1},
      {"book|(id)|..", malformed, "(id)", 2},
      {"*|book", malformed, "*", 1},
  };
  for (const auto& one : cases) {
    const std::string log = followed(document, one.path);
    EXPECT_NE(log.find(one.reason), log.npos) << one.path << "\n" << log;
    EXPECT_NE(log.find("pathStep: " + one.step + "\n"), log.npos) << one.path << "\n" << log;
    EXPECT_NE(log.find("stepNumber: " + std::to_string(one.number)), log.npos) << log;
  }
}

}  // namespace
}  // namespace zantrel::test

// Documents of other projects: what the strict check says of them and of damaged ones, and that the
// tolerant parser and the writer agree on every one.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_naming.h"
#include "core/charset/encoding_convert.h"
#include "support/test_data.h"
#include "support/xml_mutations.h"
#include "support/xml_peers.h"
#include "xml/parse_engine.h"
#include "xml/xml_store.h"
#include "xml/xml_writer.h"

namespace zantrel::test {
namespace {

struct Document {
  std::string name;
  std::string text;  // in UTF-8
  bool isWellFormed;
};

int codePageOf(const std::string& bytes) {
  if (bytes.starts_with(std::string("<\0", 2))) return 1200;
  if (bytes.starts_with(std::string("\0<", 2))) return 1201;
  constexpr std::string_view kName = "encoding=";
  const std::size_t at = bytes.substr(0, bytes.find("?>")).find(kName);
  if (!bytes.starts_with("<?xml") || at == std::string::npos) return 65001;
  const std::size_t begin = at + kName.size() + 1;
  const std::size_t end = bytes.find(bytes[begin - 1], begin);
  return CharsetNaming::charsetToCodePage(bytes.substr(begin, end - begin));
}

std::string toUtf8(const std::string& bytes) {
  const ByteOrderMark mark = findByteOrderMark(asBytes(bytes));
  const int page = mark.codePage != 0 ? mark.codePage : codePageOf(bytes);
  if (page == 0 || page == 65001) return bytes;
  DataBuffer text;
  EncodingConvert().EncConvert(page, 65001, bytes.data() + mark.length, bytes.size() - mark.length,
                               text);
  return std::string(asText(text.bytes()));
}

std::vector<Document> documents() {
  const auto folder = corpusFolder();
  std::vector<Document> all;
  if (!folder) return all;
  for (const auto& row : readTable(*folder + "/xml/MANIFEST.tsv"))
    if (row.at(0) != "file")
      all.push_back({row[0], toUtf8(readFile(*folder + "/xml/" + row[0])),
                     row.at(3).starts_with("well-formed")});
  EXPECT_GT(all.size(), 100U);
  return all;
}

// The corpus has the verdicts of a parser that expands entities, up to a limit, but no parameter
// entities, and that must know the encoding.
bool isJudgedOtherwise(const std::string& name) {
  for (const char* other :
       {"libxml2/recurse__lol_classic.xml", "libxml2/recurse__lol_long_name.xml",
        "libxml2/errors__unsupported-encoding.xml", "libxml2/valid__t8.xml"})
    if (name == other) return true;
  return false;
}

TEST(XmlCorpusTest, TheStrictCheckGivesTheVerdictsOfTheCorpus) {
  if (!corpusFolder()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const Document& document : documents())
    EXPECT_EQ(judgeXml(document.text).error.empty(),
              document.isWellFormed != isJudgedOtherwise(document.name))
        << document.name << "\n"
        << judgeXml(document.text).error;
}

TEST(XmlCorpusTest, OtherParsersAgreeOnDamagedDocuments) {
  if (!corpusFolder()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  if (!XmlPeers::kThereAreSome) GTEST_SKIP() << "neither Expat nor libxml2 is installed";
  constexpr int kMutations = 60;
  constexpr std::size_t kLargest = 20000;
  XmlPeers peers;
  for (const Document& document : documents()) {
    if (document.text.size() > kLargest) continue;
    EXPECT_EQ(peers.compare(document.text), "") << document.name;
    XmlMutations mutations(document.text);
    for (int i = 0; i < kMutations; ++i)
      EXPECT_EQ(peers.compare(mutations.next()), "") << document.name;
  }
  EXPECT_GT(peers.accepted(), peers.compared() / 10);
  peers.recordReasons();
}

std::string rewritten(const std::string& text, RecordedLog& log) {
  const XmlStore::Ref store = XmlStore::create();
  TreeInfo* const tree = ParseEngine(*store, {}, log, nullptr).parse(text);
  if (tree == nullptr) return "";
  StringBuffer out{std::string_view()};
  writeXml(tree->root, false, out);
  return std::string(out.view());
}

TEST(XmlCorpusTest, EveryDocumentLoadsAndSavesStably) {
  if (!corpusFolder()) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const Document& document : documents()) {
    RecordedLog log;
    const std::string once = rewritten(document.text, log);
    // Its DTD has more "<" than ">": where it ends is found by counting them.
    const bool losesItsEnd = document.name == "libxml2/errors__ent_redecl.xml";
    if (document.isWellFormed && !losesItsEnd) {
      EXPECT_EQ(log.text(), "") << document.name;
      EXPECT_NE(once, "") << document.name;
    }
    EXPECT_EQ(rewritten(once, log), once) << document.name;
  }
}

}  // namespace
}  // namespace zantrel::test

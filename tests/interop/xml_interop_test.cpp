// What is well-formed, with Expat and libxml2.

#include <gtest/gtest.h>

#include <string>

#include "support/test_data.h"
#include "support/xml_mutations.h"
#include "support/xml_peers.h"

namespace zantrel::test {
namespace {

TEST(XmlInteropTest, OthersFindTheSameDocumentsWellFormed) {
  if (!XmlPeers::kThereAreSome) GTEST_SKIP() << "neither Expat nor libxml2 is installed";
  constexpr int kMutations = 1500;
  XmlPeers peers;
  for (const auto& row : readTable(ZANTREL_TEST_DATA "/xml/documents.txt")) {
    const std::string document = unescape(row.at(0));
    EXPECT_EQ(judgeXml(document).error, "") << document;
    EXPECT_EQ(peers.compare(document), "");
    XmlMutations mutations(document);
    for (int i = 0; i < kMutations; ++i) EXPECT_EQ(peers.compare(mutations.next()), "");
  }
  // Damage that nothing survives would compare little.
  EXPECT_GT(peers.accepted(), peers.compared() / 20);
  peers.recordReasons();
}

}  // namespace
}  // namespace zantrel::test

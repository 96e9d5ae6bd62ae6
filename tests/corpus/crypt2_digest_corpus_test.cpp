// Digests and authentication codes of the corpus through the public class.

#include <zantrel/crypt2.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "support/test_data.h"

namespace zantrel::test {
namespace {

/// "haval192,4" is HAVAL of 192 bits in 4 passes.
void choose(Zantrel::Crypt2& crypt, const std::string& name) {
  const bool haval = name.starts_with("haval");
  crypt.put_HashAlgorithm(haval ? "haval" : name);
  if (!haval) return;
  crypt.put_KeyLength(std::stoi(name.substr(5, 3)));
  crypt.put_HavalRounds(std::stoi(name.substr(9)));
}

std::string hexOf(const Zantrel::Bytes& bytes) {
  return hex({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::string inPieces(Zantrel::Crypt2& crypt, std::string_view data, std::size_t piece) {
  crypt.HashBeginBytes({});
  for (; !data.empty(); data.remove_prefix(std::min(piece, data.size())))
    crypt.HashMoreBytes(Zantrel::bytesOf(data.substr(0, piece)));
  return hexOf(crypt.HashFinal());
}

TEST(Crypt2DigestCorpusTest, EveryDigestInOnePieceAndInPieces) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  auto rows = readTable(*folder + "/crypto/digests.tsv");
  rows.erase(rows.begin());  // headings
  int checked = 0;
  Zantrel::Crypt2 crypt;
  for (const auto& row : rows) {
    const std::string once = unhex(row[1]);
    std::string input;
    for (int i = std::stoi(row[2]); i > 0; --i) input += once;
    choose(crypt, row[0]);
    EXPECT_EQ(hexOf(crypt.HashBytes(Zantrel::bytesOf(input))), row[3]) << row[0] << " " << row[1];
    const std::size_t piece = input.size() > 70000 ? 1000 : 63;
    EXPECT_EQ(inPieces(crypt, input, piece), row[3]) << row[0] << " in pieces of " << piece;
    ++checked;
  }
  EXPECT_GT(checked, 500);
}

TEST(Crypt2DigestCorpusTest, HmacsAreThePublishedOnesOrFollowTheStatedRule) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  auto rows = readTable(*folder + "/crypto/hmac.tsv");
  rows.erase(rows.begin());
  int checked = 0;
  Zantrel::Crypt2 crypt;
  crypt.put_EncodingMode("hex");
  for (const auto& row : rows) {
    if (row[0] == "md2" && row[1].empty()) continue;  // has lost its key
    crypt.put_HashAlgorithm(row[0]);
    EXPECT_TRUE(crypt.SetHmacKeyEncoded(row[1], "hex"));
    const Zantrel::Bytes code = crypt.HmacBytes(Zantrel::bytesOf(unhex(row[2])));
    EXPECT_EQ(hexOf(code), row[4] == "agrees" ? row[3] : row[5]) << row[0];
    ++checked;
  }
  EXPECT_GT(checked, 80);
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <string>

#include "compress/zantrel_deflate.h"
#include "core/log_null.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

TEST(DeflateCorpusTest, EveryFileComesBackAndLevelsSixAndNineAreAsSmallAsZlibs) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  auto rows = readTable(*folder + "/compress/ratios.tsv");
  ASSERT_GT(rows.size(), 10u);
  rows.erase(rows.begin());  // headings
  std::size_t ours[10] = {}, zlib1 = 0, zlib6 = 0, zlib9 = 0;
  for (const auto& row : rows) {
    const std::string text = readFile(*folder + "/compress/plain/" + row.at(0));
    for (int level = 0; level <= 9; ++level) {
      ZantrelDeflate engine;
      engine.setLevel(level);
      LogNull log;
      DataBuffer out, back;
      ASSERT_TRUE(engine.deflateBuffer(asBytes(text), out, log));
      ASSERT_TRUE(engine.inflateBuffer(out.bytes(), back, log));
      EXPECT_TRUE(back.text() == text) << row[0] << " at " << level;
      ours[level] += out.getSize();
    }
    zlib1 += std::stoul(row.at(2));
    zlib6 += std::stoul(row.at(3));
    zlib9 += std::stoul(row.at(4));
  }
  EXPECT_LT(ours[1], zlib1);
  EXPECT_LT(ours[6], zlib6);
  EXPECT_LT(ours[9], zlib9);
}

}  // namespace
}  // namespace zantrel::test

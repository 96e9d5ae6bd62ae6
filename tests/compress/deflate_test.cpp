#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "compress/deflate_data.h"

namespace zantrel::test {
namespace {

TEST(DeflateTest, EveryKindOfInputComesBackAtEveryLevel) {
  ZantrelDeflate engine;
  for (const DeflateInput& input : deflateInputs()) {
    for (int level = 0; level <= 9; ++level) {
      engine.setLevel(level);
      const std::string stream = deflated(engine, input.bytes);
      EXPECT_TRUE(inflated(engine, stream) == input.bytes) << input.name << " at " << level;
      // Stored blocks at worst: five bytes in 8192, the shortest that is thought of as a block.
      EXPECT_LE(stream.size(), input.bytes.size() + input.bytes.size() / 8192 * 5 + 16)
          << input.name << " at " << level;
    }
  }
}

TEST(DeflateTest, EverySmallSizeComesBackAtEveryLevel) {
  const std::string text = "to be or not to be or not to bee or not to be" + noise(300) +
                           std::string(300, 'x') + "to be or not to be or not";
  ZantrelDeflate engine;
  for (int level = 0; level <= 9; ++level) {
    engine.setLevel(level);
    for (std::size_t size = 0; size <= text.size(); ++size) {
      const std::string part = text.substr(text.size() - size);
      const std::string stream = deflated(engine, part);
      ASSERT_TRUE(inflated(engine, stream) == part) << size << " at " << level;
      ASSERT_LE(stream.size(), size + 5) << size << " at " << level;
    }
  }
}

// Around the history, the pieces that are judged together, the largest block, the window.
TEST(DeflateTest, SizesAroundTheLimitsOfTheWindowComeBack) {
  const std::string text = prose(600000) + noise(100000);
  ZantrelDeflate engine;
  for (const std::size_t limit :
       {4096U, 4096U + 518U, 32768U, 65535U, 65536U, 163840U, 262144U, 262144U + 65536U, 600000U}) {
    for (const std::size_t size : {limit - 2, limit - 1, limit, limit + 1, limit + 3}) {
      for (const int level : {0, 1, 6, 9}) {
        engine.setLevel(level);
        ASSERT_TRUE(inflated(engine, deflated(engine, text.substr(0, size))) ==
                    text.substr(0, size))
            << size << " at " << level;
      }
    }
  }
}

TEST(DeflateTest, PiecesOfEverySizeGiveTheBytesOfTheWhole) {
  ZantrelDeflate engine;
  for (const DeflateInput& input : deflateInputs(300000)) {
    for (const int level : {0, 1, 5, 9}) {
      engine.setLevel(level);
      const std::string whole = deflated(engine, input.bytes);
      for (const std::size_t piece : {1U, 4097U, 60000U, 262144U, 262145U}) {
        if (piece == 1 && level != 1) continue;
        ASSERT_TRUE(deflated(engine, input.bytes, piece) == whole)
            << input.name << " at " << level << " in pieces of " << piece;
      }
    }
  }
}

TEST(DeflateTest, AnUsedEngineGivesTheBytesOfAFreshOne) {
  const std::vector<DeflateInput> inputs = deflateInputs(100000);
  ZantrelDeflate used;
  for (const int level : {6, 1, 9, 6}) {
    used.setLevel(level);
    for (const DeflateInput& input : inputs) {
      ZantrelDeflate fresh;
      fresh.setLevel(level);
      ASSERT_TRUE(deflated(used, input.bytes) == deflated(fresh, input.bytes)) << input.name;
    }
  }
}

TEST(DeflateTest, HigherLevelsOfALadderAreSmaller) {
  ZantrelDeflate engine;
  const std::string text = prose(400000);
  std::vector<std::size_t> sizes;
  for (const int level : {0, 1, 3, 6, 9}) {
    engine.setLevel(level);
    sizes.push_back(deflated(engine, text).size());
  }
  EXPECT_TRUE(std::is_sorted(sizes.rbegin(), sizes.rend())) << testing::PrintToString(sizes);
  EXPECT_LT(sizes[1] * 2, sizes[0]);
}

TEST(DeflateTest, RepeatedNoiseIsStillCompressed) {
  ZantrelDeflate engine;
  for (const int level : {1, 6, 9}) {
    engine.setLevel(level);
    const std::string part = noise(32000);
    EXPECT_LT(deflated(engine, part + part + part).size(), 33500U) << level;
  }
}

TEST(DeflateTest, EmptyInputGivesAValidEmptyStream) {
  ZantrelDeflate engine;
  for (int level = 0; level <= 9; ++level) {
    engine.setLevel(level);
    const std::string stream = deflated(engine, "", 1);
    EXPECT_LE(stream.size(), 5U);
    EXPECT_EQ(inflated(engine, stream), "");
  }
}

}  // namespace
}  // namespace zantrel::test

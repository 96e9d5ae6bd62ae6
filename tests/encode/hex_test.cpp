#include "core/encode/hex.h"

#include "encode/encode_test_support.h"
#include "encode/slow_reference.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

TEST(HexTest, MatchesThePublishedVectors) {
  for (const auto& row : readTable(std::string(ZANTREL_TEST_DATA) + "/encode/rfc4648.tsv")) {
    EXPECT_EQ(hexText(row[0]), row[3]);
    EXPECT_EQ(unhexText(row[3]), row[0]);
  }
}

TEST(HexTest, ReadsEitherCaseAndIgnoresALastUnpairedCharacter) {
  EXPECT_EQ(unhexText("4d61"), "Ma");
  EXPECT_EQ(unhexText("4D6"), "M");
  EXPECT_EQ(unhexText("4"), "");
  EXPECT_EQ(unhexText(""), "");
}

TEST(HexTest, MisreadsWhatIsNoDigitWithoutLookingElsewhere) {
  EXPECT_EQ(unhexText("4 G1"), "\x30\x01");  // deliberate: no character is validated or skipped
}

TEST(HexTest, EveryPathReadsEveryPairAlike) {
  std::string all;
  for (unsigned pair = 0; pair < 65536; ++pair)
    all += {static_cast<char>(pair >> 8), static_cast<char>(pair)};
  std::string expected;
  for (std::size_t i = 0; i < all.size(); i += 2)
    expected += static_cast<char>(unvalidatedHexPair(all[i], all[i + 1]));
  onEachCpuPath([&] { ASSERT_EQ(unhexText(all), expected); });
}

TEST(HexTest, DecodesWhatItEncodesAtEveryLengthAndAlignment) {
  std::mt19937 random(3);
  const std::string bytes = randomText(random, 500);
  onEachCpuPath([&] {
    for (std::size_t size = 0; size < 400; ++size) {
      const std::string_view in = std::string_view(bytes).substr(size % 65, size);
      std::string expected;
      for (const char c : in) expected += slowEscape(static_cast<unsigned char>(c), '%').substr(1);
      ASSERT_EQ(hexText(in), expected);
      ASSERT_EQ(unhexText(expected), in);
    }
  });
}

}  // namespace
}  // namespace zantrel::test

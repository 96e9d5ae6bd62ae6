#include "core/encode/base32.h"

#include "encode/encode_test_support.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

TEST(Base32Test, MatchesThePublishedVectors) {
  for (const auto& row : readTable(std::string(ZANTREL_TEST_DATA) + "/encode/rfc4648.tsv")) {
    EXPECT_EQ(base32(row[0]), row[2]);
    EXPECT_EQ(unbase32(row[2]), row[0]);
  }
}

TEST(Base32Test, DecodesLeniently) {
  EXPECT_EQ(unbase32("mzxw6ytb"), "fooba");
  EXPECT_EQ(unbase32("MZ-XW 6Y\r\nT8B1"), "fooba");
  EXPECT_EQ(unbase32("MY======MY"), "f");
  EXPECT_EQ(unbase32(std::string_view("MY\0MY", 5)), "f");
  EXPECT_EQ(unbase32("M"), "");
}

TEST(Base32Test, DecodesWhatItEncodes) {
  std::mt19937 random(4);
  for (std::size_t size = 0; size < 100; ++size) {
    const std::string in = randomText(random, size);
    EXPECT_EQ(unbase32(base32(in)), in);
  }
}

}  // namespace
}  // namespace zantrel::test

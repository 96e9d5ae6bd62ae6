#include "core/encode/url_encode.h"

#include "encode/encode_test_support.h"
#include "encode/slow_reference.h"
#include "support/cpu_paths.h"

namespace zantrel::test {
namespace {

TEST(UrlEncodeTest, EscapesEverythingButLettersAndDigits) {
  EXPECT_EQ(urlEncoded("a b&c"), "a+b%26c");
  EXPECT_EQ(urlEncoded("-._~"), "%2D%2E%5F%7E");
  EXPECT_EQ(urlEncoded("\xC3\xA9"), "%C3%A9");
  EXPECT_EQ(urlEncoded(""), "");
}

TEST(UrlEncodeTest, DecodesWithoutValidating) {
  EXPECT_EQ(urlDecoded("a+b%26c"), "a b&c");
  EXPECT_EQ(urlDecoded("%4a%4A"), "JJ");
  EXPECT_EQ(urlDecoded("%G0"), std::string(1, '\0'));  // "G" counts as 16, modulo 256
}

TEST(UrlEncodeTest, EndsAtAPercentSignWithoutTwoCharacters) {
  EXPECT_EQ(urlDecoded("abc%"), "abc");
  EXPECT_EQ(urlDecoded("abc%4"), "abc");
  EXPECT_EQ(urlDecoded("%"), "");
}

TEST(UrlEncodeTest, EveryPathEncodesAlikeAndReadsItBack) {
  std::mt19937 random(6);
  const std::string mixtures[] = {"", "abcXYZ019 ", "abcdefghijklmnopqrstuvwxyz./:", "/=&%"};
  for (std::size_t round = 0; round < 400; ++round) {
    const std::string in = randomText(random, round, mixtures[round % std::size(mixtures)]);
    const std::string expected = slowUrlEncode(in);
    onEachCpuPath([&] {
      ASSERT_EQ(urlEncoded(in), expected);
      ASSERT_EQ(urlDecoded(expected), in);
    });
  }
}

}  // namespace
}  // namespace zantrel::test

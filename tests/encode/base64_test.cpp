#include "core/encode/base64.h"

#include <algorithm>

#include "encode/encode_test_support.h"
#include "encode/slow_reference.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

TEST(Base64Test, MatchesThePublishedVectors) {
  for (const auto& row : readTable(std::string(ZANTREL_TEST_DATA) + "/encode/rfc4648.tsv")) {
    EXPECT_EQ(base64(row[0]), row[1]);
    EXPECT_EQ(unbase64(row[1]), row[0]);
  }
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("Ma"), "TWE=");
  EXPECT_EQ(base64("M"), "TQ==");
}

TEST(Base64Test, WritesABreakBehindEveryFullLineTheLastIncluded) {
  const std::string line(54, 'M');
  std::string full;
  for (int i = 0; i < 18; ++i) full += "TU1N";
  EXPECT_EQ(base64Lines(line, 72), full + "\r\n");
  EXPECT_EQ(base64Lines(line + "M", 72), full + "\r\nTQ==");
  EXPECT_EQ(base64Lines(line.substr(0, 53), 72), full.substr(0, 70) + "0=\r\n");
  EXPECT_EQ(base64Lines("", 72), "");
}

TEST(Base64Test, KeepsGroupsTogetherWhenTheLineLengthIsNoMultipleOfFour) {
  EXPECT_EQ(base64Lines("foobar", 5), "Zm9vYmFy\r\n");
  EXPECT_EQ(base64Lines("foobar", 4), "Zm9v\r\nYmFy\r\n");
  EXPECT_EQ(base64Lines("foobar", 0), "Zm9v\r\nYmFy\r\n");
  EXPECT_EQ(base64Lines("foobar", -7), "Zm9v\r\nYmFy\r\n");
}

TEST(Base64Test, DecodesLeniently) {
  const struct {
    const char* about;
    std::string_view in;
    std::string_view out;
  } cases[] = {
      {"blanks and line ends are skipped", "T W\r\n\tE=", "Ma"},
      {"an equals sign ends the text", "TQ==TWE=", "M"},
      {"a zero byte ends the text", std::string_view("TWFu\0TWFu", 9), "Man"},
      {"bytes outside + .. z are skipped",
       "T\"W*{~\xFF\xC3"
       "E=",
       "Ma"},
      {"minus and underscore are 62 and 63", "--__", "\xFB\xEF\xFF"},
      {"other strays in the range count as zero", "T,:@", {"L\0\0", 3}},
      {"one left-over character holds no byte", "TWFuT", "Man"},
      {"two hold one byte", "TWFuTQ", "ManM"},
      {"three hold two", "TWFuTWE", "ManMa"},
      {"padding alone is nothing", "====", ""},
  };
  onEachCpuPath([&] {
    for (const auto& c : cases) EXPECT_EQ(unbase64(c.in), c.out) << c.about;
  });
}

TEST(Base64Test, DecodesWhatItEncodesAtEveryLengthAndAlignment) {
  std::mt19937 random(1);
  const std::string bytes = randomText(random, 700);
  const auto roundTrips = [&] {
    for (std::size_t size = 0; size < 600; ++size) {
      const std::string_view in = std::string_view(bytes).substr(size % 65, size);
      const std::string text = base64(in);
      ASSERT_EQ(slowBase64Decode(text), in) << size;
      ASSERT_EQ(unbase64(text), in) << size;
      ASSERT_EQ(unbase64(base64Lines(in, static_cast<int>(size % 80))), in) << size;
    }
  };
  onEachCpuPath(roundTrips);
}

TEST(Base64Test, EveryPathFollowsTheLenientRuleOnAnyInput) {
  std::mt19937 random(2);
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  // Mostly digits, with ever more of what must be skipped, misread or obeyed.
  const std::string mixtures[] = {alphabet + "\r\n",
                                  alphabet + "-_,.:;<>?@[]^`",
                                  alphabet + alphabet + " \t\r\n{~!\x80\xFF",
                                  " \r\n",
                                  "",
                                  alphabet + alphabet + alphabet + alphabet + alphabet + "="};
  for (int round = 0; round < 300; ++round) {
    const std::string in = randomText(
        random, random() % 700, mixtures[static_cast<std::size_t>(round) % std::size(mixtures)]);
    const std::string expected = slowBase64Decode(in);
    onEachCpuPath([&] { ASSERT_EQ(unbase64(in), expected) << hex(in); });
  }
}

// Fills the part of the stack that a function called next uses.
[[gnu::noinline]] void dirtyStack() {
  volatile char bytes[16384];
  for (volatile char& byte : bytes) byte = '\xFF';
}

TEST(Base64Test, EveryByteValueIsClassedAlikeOnEachPathAndPosition) {
  for (int byte = 0; byte < 256; ++byte) {
    std::string in(256, 'x');
    in[static_cast<std::size_t>(byte)] = static_cast<char>(byte);
    const std::string expected = slowBase64Decode(in);
    onEachCpuPath([&] {
      dirtyStack();
      ASSERT_EQ(unbase64(in), expected) << byte;
    });
  }
}

TEST(Base64Test, LargeTextsGoPastTheCachesToTheSameResult) {
  std::mt19937 random(11);
  const std::string piece = randomText(random, 99991);
  std::string in;
  while (in.size() < (std::size_t{9} << 20)) in += piece;
  std::string expected;
  {
    const ScopedCpuFeatures scope{CpuFeatures()};
    expected = base64(in);
  }
  for (const std::size_t offset : {0U, 1U}) {
    std::vector<char> text(expected.size() + offset);
    std::vector<std::uint8_t> bytes(base64DecodedMaxSize(expected.size()) + offset);
    ASSERT_EQ(base64Encode(asBytes(in), text.data() + offset), expected.size());
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), text.data() + offset));
    ASSERT_EQ(base64Decode(expected, bytes.data() + offset), in.size());
    ASSERT_TRUE(std::equal(in.begin(), in.end(), reinterpret_cast<char*>(bytes.data()) + offset));
  }
  expected[expected.size() / 2] = '\n';  // what is no digit ends the streaming
  EXPECT_TRUE(unbase64(expected) == slowBase64Decode(expected));
}

TEST(Base64Test, BufferFormsAppend) {
  StringBuffer text("x");
  ASSERT_TRUE(base64Encode(asBytes("Ma"), text));
  ASSERT_TRUE(base64EncodeLines(asBytes("foo"), 4, text));
  EXPECT_EQ(text.view(), "xTWE=Zm9v\r\n");
  DataBuffer bytes;
  ASSERT_TRUE(base64Decode("TWE=", bytes));
  ASSERT_TRUE(base64Decode("", bytes));
  ASSERT_TRUE(base64Decode("TQ", bytes));
  EXPECT_EQ(bytes.text(), "MaM");
}

}  // namespace
}  // namespace zantrel::test

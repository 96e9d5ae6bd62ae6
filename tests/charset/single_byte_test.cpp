#include "core/charset/single_byte.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "charset/codec_runner.h"
#include "support/cpu_paths.h"

namespace zantrel {
namespace {

const CodePage& page(int id) {
  return *findCodePage(id);
}

TEST(SingleByteTest, UndefinedCellsOfWindowsPagesAreC1Controls) {
  EXPECT_EQ(test::decodeAll(page(1252), "\x80\x81\x8D\x8F\x90\x9D\xFF").output,
            u"\u20AC\u0081\u008D\u008F\u0090\u009D\u00FF");
  EXPECT_EQ(test::encodeAll(page(1252), u"\u0081").output, "\x81");
}

TEST(SingleByteTest, StopsAtAnUndefinedByteAndGoesOnBehindIt) {
  const auto run = test::decodeAll(page(28593), "ab\xA5z");
  EXPECT_EQ(run.stop, CodecStop::Invalid);
  EXPECT_EQ(run.consumed, 2u);
  EXPECT_EQ(run.badLength, 1u);
  EXPECT_EQ(run.output, u"ab");
  EXPECT_EQ(test::decodeReplacing(page(28593), "ab\xA5\xA5z"), u"ab\uFFFD\uFFFDz");
}

TEST(SingleByteTest, NeverGuessesACharacterThatThePageLacks) {
  const struct {
    std::u16string text;
    CodecStop stop;
    std::size_t badLength;
  } cases[] = {
      {u"\u0100", CodecStop::Unmappable, 1},        // not written as A
      {u"\uFF21", CodecStop::Unmappable, 1},        // nor full-width A
      {u"\xD83D\xDE00", CodecStop::Unmappable, 2},  // one character
      {u"\xD83D", CodecStop::Invalid, 1},          {u"\xD83Dx", CodecStop::Invalid, 1},
      {u"\xDE00", CodecStop::Invalid, 1},
  };
  for (const auto& c : cases) {
    const auto run = test::encodeAll(page(1252), u"ab" + c.text);
    EXPECT_EQ(run.stop, c.stop);
    EXPECT_EQ(run.consumed, 2u);
    EXPECT_EQ(run.badLength, c.badLength);
    EXPECT_EQ(run.output, "ab");
  }
}

TEST(SingleByteTest, HalfASurrogatePairWaitsForTheOtherHalf) {
  const EncoderPtr encoder = page(1252).makeEncoder();
  const char16_t half[] = {u'a', u'\xD83D'};
  std::uint8_t out[8];
  const CodecResult result = encoder->encode(half, false, out);
  EXPECT_EQ(result.stop, CodecStop::Truncated);
  EXPECT_EQ(result.consumed, 1u);
}

TEST(SingleByteTest, ByteZeroIsACharacterLikeAnyOther) {
  for (const int id : {1252, 37, 20127}) {
    const std::string zeros(130, '\0');
    EXPECT_EQ(test::decodeAll(page(id), zeros).output, std::u16string(130, u'\0')) << id;
    EXPECT_EQ(test::encodeAll(page(id), std::u16string(130, u'\0')).output, zeros) << id;
  }
}

TEST(SingleByteTest, EveryCpuPathEqualsThePortableOne) {
  for (const int id : {37, 874, 1251, 1252, 20290, 20838, 28593, 28597, 50000}) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
      std::string bytes(random() % 300, '\0');
      for (char& c : bytes) c = static_cast<char>(random());
      std::u16string text(random() % 300, u'\0');
      for (char16_t& c : text) {
        // Mostly the page's own characters, now and then any unit.
        c = static_cast<char16_t>(random());
        if (random() % 50 != 0) c = test::decodeReplacing(page(id), {static_cast<char>(c)}).at(0);
      }
      std::vector<std::tuple<std::u16string, std::string, CodecStop, std::size_t>> results;
      test::onEachCpuPath([&] {
        const auto run = test::encodeAll(page(id), text);
        results.emplace_back(test::decodeReplacing(page(id), bytes), run.output, run.stop,
                             run.consumed);
      });
      for (const auto& result : results) ASSERT_EQ(result, results.front()) << id;
    }
  }
}

}  // namespace
}  // namespace zantrel

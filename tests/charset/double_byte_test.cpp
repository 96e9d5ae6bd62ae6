// The double-byte pages and those with longer codes on top: GB 18030, EUC-JP, EUC-TW.

#include "core/charset/double_byte.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "charset/codec_runner.h"

namespace zantrel {
namespace {

const CodePage& page(int id) {
  return *findCodePage(id);
}

TEST(DoubleByteTest, KnownTextsReadAndWrite) {
  const struct {
    int page;
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {932, "\x93\xFA\x96{ \xB1 \\~", u"日本 ｱ \\~"},
      {932, "\xF0\x40\xF9\xFC", u"\uE000\uE757"},  // user-defined
      {936, "\xD6\xD0\xB9\xFA \x80", u"中国 €"},
      {949, "\xB0\xA1\x81\x41", u"가갂"},
      {950, "\xA4\xA4\xA4\xE5\xF9\xD6", u"中文碁"},
      {1361, "\x88\x61", u"가"},
      {10001, "\x93\xFA\xFD", u"日©"},
      {20000, "\xC4\xE3", u"中"},
      {20261, "\xC2\x65\xA6", u"é#"},
      {51932, "\xC6\xFC\x8E\xB1\x8F\xB0\xA1", u"日ｱ丂"},
      {51936, "\xD6\xD0", u"中"},
      {51949, "\xB0\xA1", u"가"},
      {51950, "\xC4\xE3\x8E\xA2\xA1\xA1", u"中乂"},
      {54936, "\xD6\xD0\x81\x30\x81\x30\x94\x39\xFC\x36", u"中\u0080\U0001F600"},
  };
  for (const auto& c : cases) {
    const auto decoded = test::decodeAll(page(c.page), c.bytes);
    EXPECT_EQ(decoded.stop, CodecStop::InputEnd) << c.page;
    EXPECT_EQ(decoded.output, c.text) << c.page;
    const auto encoded = test::encodeAll(page(c.page), c.text);
    EXPECT_EQ(encoded.stop, CodecStop::InputEnd) << c.page;
    EXPECT_EQ(encoded.output, c.bytes) << c.page;
  }
}

TEST(DoubleByteTest, OfSeveralCodesTheOneOfWindowsIsWritten) {
  const struct {
    int page;
    std::u16string text;
    std::string code;
  } cases[] = {
      {932, u"\u2252", "\x81\xE0"},  // not NEC's 8790
      {932, u"\u2160", "\x87\x54"},  // NEC's row 13, not IBM's FA4A
      {932, u"\u7E8A", "\xFA\x5C"},  // IBM's, not NEC's copy ED40
      {932, u"\uFFE2", "\x81\xCA"}, {950, u"\u5341", "\xA4\x51"}, {950, u"\u2550", "\xF9\xF9"},
  };
  for (const auto& c : cases) EXPECT_EQ(test::encodeAll(page(c.page), c.text).output, c.code);
}

TEST(DoubleByteTest, WhatIsInvalidTakesNothingValidAlong) {
  const struct {
    int page;
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {932, "a\x81", u"a\uFFFD"},            // lead byte at the end
      {932, "\x81\"x\"", u"\uFFFD\"x\""},    // a trail byte that cannot be one is kept
      {932, "\x85\x40z", u"\uFFFD@z"},       // empty cell, its trail byte is ASCII
      {932, "\xEF\x80z", u"\uFFFD\uFFFDz"},  // a row that the page lacks: two bad bytes
      {932, "\xFFz\xA0", u"\uFFFDz\uFFFD"},
      {949, "\xC9\x41z", u"\uFFFDAz"},
      {950, "\xC6\xA1", u"\uF6B1"},
      {950, "\xA1\xFF\xA4\x40", u"\uFFFD\uFFFD一"},
      {51932, "\x8F\xB0", u"\uFFFD\uFFFD"},
      {51932, "\x8F\xB0\x41",
       u"\uFFFD\uFFFD"
       u"A"},
      {51932, "\x8F\xA1\xA1z", u"\uFFFDz"},  // a whole code without a character
      {51950, "\x8E\xA2\xA1", u"\uFFFD㊣"},
      {51950, "\x8E\xA8\xA1\xA1z", u"\uFFFDz"},
      {54936, "\x81\x30\x81", u"\uFFFD0\uFFFD"},
      {54936, "\x81\x30z", u"\uFFFD0z"},
      {54936, "\x84\x31\xA4\x39", u"\uFFFF"},
      {54936, "\x84\x31\xA5\x30z", u"\uFFFDz"},  // behind the last of the basic plane
      {54936, "\xE3\x32\x9A\x35", u"\U0010FFFF"},
      {54936, "\xE3\x32\x9A\x36z", u"\uFFFDz"},
      {54936, "\xFE\x39\xFE\x39", u"\uFFFD"},
      {54936, "\xFF\x80z", u"\uFFFD\uFFFDz"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(test::decodeReplacing(page(c.page), c.bytes), c.text)
        << c.page << ' ' << c.bytes.size();
  }
}

TEST(DoubleByteTest, EveryCharacterOfUnicodeHasItsCodeInGb18030) {
  const DecoderPtr decoder = page(54936).makeDecoder();
  const EncoderPtr encoder = page(54936).makeEncoder();
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    if (point >= 0xD800 && point < 0xE000) continue;
    const char16_t units[] = {point < 0x10000 ? static_cast<char16_t>(point)
                                              : static_cast<char16_t>(0xD7C0 + (point >> 10)),
                              static_cast<char16_t>(0xDC00 + (point & 0x3FF))};
    const std::size_t length = point < 0x10000 ? 1 : 2;
    std::uint8_t code[4];
    const CodecResult there = encoder->encode({units, length}, true, code);
    ASSERT_EQ(there.stop, CodecStop::InputEnd) << static_cast<unsigned>(point);
    char16_t read[2];
    const CodecResult back = decoder->decode({code, there.produced}, true, read);
    ASSERT_EQ(back.stop, CodecStop::InputEnd) << static_cast<unsigned>(point);
    ASSERT_EQ(std::u16string(read, back.produced), std::u16string(units, length));
  }
}

TEST(DoubleByteTest, PiecesOfAnySizeGiveTheSameAsOnePiece) {
  std::mt19937 random(3);
  for (const int id : {932, 936, 949, 950, 1361, 10002, 20003, 20261, 51932, 51950, 54936}) {
    for (int round = 0; round < 20; ++round) {
      std::string bytes(1 + random() % 200, '\0');
      for (char& c : bytes) {
        c = static_cast<char>(random() % 4 == 0 ? 0x20 + random() % 0x5F : 0x80 + random() % 0x80);
        if (random() % 8 == 0) c = static_cast<char>(0x30 + random() % 10);
      }
      const std::u16string whole = test::decodeReplacing(page(id), bytes);
      std::u16string valid = whole;
      std::erase(valid, u'\xFFFD');
      const std::string written = test::encodeAll(page(id), valid).output;
      for (const std::size_t in : {1u, 2u, 3u, 5u, 64u}) {
        for (const std::size_t out : {1u, 2u, 3u, 7u, 64u}) {
          ASSERT_EQ(test::decodeReplacing(page(id), bytes, in, out), whole) << id;
          ASSERT_EQ(test::encodeAll(page(id), valid, in, out).output, written) << id;
        }
      }
    }
  }
}

TEST(DoubleByteTest, TheWayBackIsDerivedOnceEvenWhenThreadsMeet) {
  std::vector<std::thread> threads;
  std::vector<std::string> results(4);
  for (std::string& result : results) {
    threads.emplace_back([&result] { result = test::encodeAll(page(20001), u"中").output; });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(result, results.front());
  EXPECT_EQ(test::decodeAll(page(20001), results.front()).output, u"中");
}

}  // namespace
}  // namespace zantrel

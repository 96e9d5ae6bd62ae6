#include "core/charset/unicode_codecs.h"

#include <gtest/gtest.h>

#include "charset/conversion.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

// The Unicode Standard 15.0, tables 3-8 to 3-11: how many U+FFFD stand for what is ill-formed.
TEST(UnicodeCodecsTest, Utf8ReplacesEachMaximalSubpartOnce) {
  struct Case {
    std::string in;
    std::string out;  // UTF-8, with "?" for U+FFFD
  };
  const Case cases[] = {
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"s, "????????A"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"s, "????????A"},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"s, "?????A??B"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"s, "????A"},
      {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64"s, "a???b?c??d"},
      {"\xE2\x82"s, "?"},
      {"\xF0\x9F\x98"s, "?"},
      {"\xC1\xBF\xF5\x80"s, "????"},
  };
  for (const Case& c : cases) {
    const Converted result = convert(65001, 20127, c.in);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.bytes, c.out) << hex(c.in);
  }
}

TEST(UnicodeCodecsTest, LoneSurrogatesAndOddBytesAreOneErrorEach) {
  struct Case {
    int from;
    std::string in;
    std::string out;
    std::uint64_t invalid;
  };
  const Case cases[] = {
      {1201, "\xD8\0\0A"s, "?A", 1},
      {1201, "\xDC\0\0A"s, "?A", 1},
      {1201, "\xD8\0\xD8\0\xDC\0"s, "?\xF0\x90\x80\x80"s, 1},
      {1201, "\0A\xD8\0"s, "A?", 1},
      {1201, "\0A\xD8\0\xDC"s, "A??", 2},
      {1201, "\0Ab"s, "A?", 1},
      {1200,
       "\0\xD8"
       "A\0"s,
       "?A", 1},
      {1200, "A\0\0"s, "A?", 1},
      {65006, "\0\0\xD8\0\0\0\0A"s, "?A", 1},
      {65006, "\0\x11\0\0\0\0\0A"s, "?A", 1},
      {65006, "\0\x10\xFF\xFF\0\0\0"s, "\xF4\x8F\xBF\xBF?", 1},
      {65005,
       "\xFF\xFF\xFF\xFF"
       "A\0\0\0"s,
       "?A", 1},
  };
  for (const Case& c : cases) {
    for (const std::size_t piece : {1u, 2u, 3u, 99u}) {
      const Streamed result = convertInPieces(c.from, 65001, c.in, piece);
      std::string expected;
      for (const char ch : c.out) expected += ch == '?' ? "\xEF\xBF\xBD"s : std::string(1, ch);
      EXPECT_EQ(hex(result.bytes), hex(expected)) << c.from << " " << hex(c.in);
      EXPECT_EQ(result.invalid, c.invalid);
    }
  }
}

TEST(UnicodeCodecsTest, EveryScalarValueRoundTripsThroughEveryForm) {
  std::string all;
  for (std::uint32_t c = 0; c < 0x110000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    for (int shift = 24; shift >= 0; shift -= 8) all += static_cast<char>(c >> shift);
  }
  for (const int form : {65001, 1200, 1201, 65005}) {
    const Converted there = convert(65006, form, all);
    ASSERT_TRUE(there.ok);
    for (const int other : {65001, 1200, 1201, 65005, 65006}) {
      if (other == form) continue;
      const Converted back = convert(form, other, there.bytes);
      ASSERT_TRUE(back.ok) << back.error;
      ASSERT_TRUE(back.bytes == convert(65006, other, all).bytes) << form << " to " << other;
    }
  }
}

}  // namespace
}  // namespace zantrel::test

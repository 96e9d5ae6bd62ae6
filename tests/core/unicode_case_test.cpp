#include "core/unicode_case.h"

#include <gtest/gtest.h>

#include "core/utf8.h"

namespace zantrel {
namespace {

TEST(UnicodeCaseTest, MapsOneCharacterToOne) {
  struct Case {
    char32_t c;
    char32_t upper;
    char32_t lower;
    char32_t folded;
  };
  const Case cases[] = {
      {U'a', U'A', U'a', U'a'},
      {U'Z', U'Z', U'z', U'z'},
      {0xB5, 0x39C, 0xB5, 0x3BC},
      {0xDF, 0xDF, 0xDF, 0xDF},
      {0xFF, 0x178, 0xFF, 0xFF},
      {0x130, 0x130, U'i', 0x130},
      {0x131, U'I', 0x131, 0x131},
      {0x17F, U'S', 0x17F, U's'},
      {0x1C5, 0x1C4, 0x1C6, 0x1C6},
      {0x3C2, 0x3A3, 0x3C2, 0x3C3},
      {0x13A0, 0x13A0, 0xAB70, 0x13A0},
      {0xAB70, 0x13A0, 0xAB70, 0x13A0},
      {0x1E9E, 0x1E9E, 0xDF, 0xDF},
      {0x212A, 0x212A, U'k', U'k'},
      {0x10400, 0x10400, 0x10428, 0x10428},
      {0x10FFFF, 0x10FFFF, 0x10FFFF, 0x10FFFF},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(toUpperCase(c.c), c.upper) << std::hex << std::uint32_t(c.c);
    EXPECT_EQ(toLowerCase(c.c), c.lower) << std::hex << std::uint32_t(c.c);
    EXPECT_EQ(foldCase(c.c), c.folded) << std::hex << std::uint32_t(c.c);
  }
}

TEST(UnicodeCaseTest, TablesAreInOrderForTheBinarySearch) {
  for (const auto& table : {unicode_case::kUpper, unicode_case::kLower, unicode_case::kFold}) {
    char32_t next = 0x80;
    for (const unicode_case::Range& range : table) {
      if (range.last < 0x80) continue;
      EXPECT_GE(range.first, next);
      EXPECT_GE(range.last, range.first);
      EXPECT_EQ((range.last - range.first) % range.step, 0U);
      next = range.last + 1;
    }
  }
}

TEST(Utf8Test, DecodesWhatItEncodesAndRefusesTheRest) {
  char bytes[4];
  for (char32_t c = 0; c <= 0x110000; ++c) {
    const std::size_t size = encodeUtf8(c, bytes);
    const bool isCharacter = c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    ASSERT_EQ(size != 0, isCharacter);
    if (!isCharacter) continue;
    const Utf8Character decoded = decodeUtf8({bytes, size});
    ASSERT_EQ(decoded.value, c);
    ASSERT_EQ(decoded.size, size);
    if (size > 1) {
      ASSERT_EQ(decodeUtf8({bytes, size - 1}).value, kNoCharacter);
    }
  }
  for (const char* bad : {"\x80", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                          "\xF8\x88\x80\x80\x80", "\xFF", "\xC3("}) {
    EXPECT_EQ(decodeUtf8(bad).value, kNoCharacter) << bad;
  }
}

}  // namespace
}  // namespace zantrel

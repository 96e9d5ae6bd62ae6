#include "core/charset/utf8_utf16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "platform/cpu_features.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

constexpr char16_t kUntouchedUnit = 0xA5A5;
constexpr std::uint8_t kUntouchedByte = 0xA5;

bool same(const CodecResult& a, const CodecResult& b) {
  return a.consumed == b.consumed && a.produced == b.produced && a.stop == b.stop &&
         a.badLength == b.badLength;
}

/// Runs the path in force and the portable one, each into memory whose end is watched.
void expectSameUnits(ByteSpan in, bool last, std::size_t room) {
  std::vector<char16_t> expected(room + 1, kUntouchedUnit);
  std::vector<char16_t> actual(room + 1, kUntouchedUnit);
  const CodecResult a = utf_portable::utf8ToUtf16(in, last, {expected.data(), room});
  const CodecResult b = utf8ToUtf16(in, last, {actual.data(), room});
  ASSERT_TRUE(same(a, b)) << hex(asText(in)) << " room " << room << ": " << a.consumed << "/"
                          << b.consumed << " " << a.produced << "/" << b.produced;
  ASSERT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<long>(a.produced),
                         actual.begin()))
      << hex(asText(in));
  ASSERT_EQ(actual[room], kUntouchedUnit);
}

void expectSameBytes(std::span<const char16_t> in, bool last, std::size_t room) {
  std::vector<std::uint8_t> expected(room + 1, kUntouchedByte);
  std::vector<std::uint8_t> actual(room + 1, kUntouchedByte);
  const CodecResult a = utf_portable::utf16ToUtf8(in, last, {expected.data(), room});
  const CodecResult b = utf16ToUtf8(in, last, {actual.data(), room});
  ASSERT_TRUE(same(a, b)) << in.size() << " units, room " << room << ": " << a.consumed << "/"
                          << b.consumed << " " << a.produced << "/" << b.produced;
  ASSERT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<long>(a.produced),
                         actual.begin()));
  ASSERT_EQ(actual[room], kUntouchedByte);
}

/// Text of characters with 1 to `widest` UTF-8 bytes in changing proportions.
std::vector<char16_t> randomText(std::mt19937& random, std::size_t length, unsigned widest) {
  std::vector<char16_t> text;
  unsigned width = 1;
  while (text.size() < length) {
    if (random() % 8 == 0) width = 1 + static_cast<unsigned>(random() % widest);
    static constexpr std::uint32_t kFirst[] = {0, 0x80, 0x800, 0x10000};
    static constexpr std::uint32_t kCount[] = {0x80, 0x780, 0xF800, 0x100000};
    std::uint32_t c = kFirst[width - 1] + static_cast<std::uint32_t>(random()) % kCount[width - 1];
    if (c >= 0xD800 && c < 0xE000) c -= 0x800;
    if (c < 0x10000) {
      text.push_back(static_cast<char16_t>(c));
    } else {
      text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
  }
  return text;
}

std::vector<std::uint8_t> utf8Of(std::span<const char16_t> text) {
  std::vector<std::uint8_t> bytes(3 * text.size() + 1);
  bytes.resize(utf_portable::utf16ToUtf8(text, true, bytes).produced);
  return bytes;
}

class Utf8Utf16Test : public testing::TestWithParam<int> {
 protected:
  static CpuFeatures features(int level) {
    CpuFeatures all = detectCpuFeatures();
    if (level < 2) all.avx512 = false;
    if (level < 1) all.avx2 = all.ssse3 = false;
    return all;
  }
  ScopedCpuFeatures scope_{features(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(Paths, Utf8Utf16Test, testing::Values(0, 1, 2));

TEST_P(Utf8Utf16Test, ValidTextOfAnyLengthAndRoomIsAsOnThePortablePath) {
  std::mt19937 random(1);
  for (unsigned round = 0; round < 1500; ++round) {
    const std::vector<char16_t> text = randomText(random, random() % 300, 1 + round % 4);
    const std::vector<std::uint8_t> bytes = utf8Of(text);
    const std::size_t skip = bytes.empty() ? 0 : random() % std::min<std::size_t>(bytes.size(), 70);
    const ByteSpan in = ByteSpan(bytes).subspan(skip);
    expectSameUnits(bytes, true, text.size());
    expectSameUnits(bytes, false, text.size() + 64);
    expectSameUnits(in, round % 2 == 0, random() % (text.size() + 80));
    expectSameBytes(text, true, bytes.size());
    expectSameBytes(text, false, bytes.size() + 64);
    expectSameBytes(text, true, random() % (bytes.size() + 80));
    if (HasFatalFailure()) return;
  }
}

TEST_P(Utf8Utf16Test, EveryTruncationIsAsOnThePortablePath) {
  std::mt19937 random(2);
  const std::vector<char16_t> text = randomText(random, 120, 4);
  const std::vector<std::uint8_t> bytes = utf8Of(text);
  for (std::size_t end = 0; end <= bytes.size(); ++end) {
    expectSameUnits(ByteSpan(bytes).first(end), true, text.size());
    expectSameUnits(ByteSpan(bytes).first(end), false, text.size());
  }
  for (std::size_t end = 0; end <= text.size(); ++end) {
    expectSameBytes(std::span(text).first(end), true, bytes.size());
    expectSameBytes(std::span(text).first(end), false, bytes.size());
  }
}

TEST_P(Utf8Utf16Test, IllFormedTextStopsWhereThePortablePathStops) {
  static constexpr const char* kBad[] = {"\xC0\x80",
                                         "\xC1\xBF",
                                         "\xE0\x9F\xBF",
                                         "\xED\xA0\x80",
                                         "\xED\xBF\xBF",
                                         "\xF0\x8F\xBF\xBF",
                                         "\xF4\x90\x80\x80",
                                         "\xF5\x80\x80\x80",
                                         "\xF8\x88\x80\x80\x80",
                                         "\xFE",
                                         "\xFF",
                                         "\x80",
                                         "\xC3",
                                         "\xE2\x82",
                                         "\xF0\x9F\x98",
                                         "\xF0\x9F",
                                         "\xC3\xC3",
                                         "\xE2\x82\x41",
                                         "\xF0\x9F\x98\x41",
                                         "\xFF\x80\x80\x80",
                                         "\xE2\x82\xAC\x80",
                                         "\xF7\xBF\xBF\xBF"};
  std::mt19937 random(3);
  for (unsigned round = 0; round < 200; ++round) {
    const std::vector<char16_t> text = randomText(random, 160, 1 + round % 4);
    const std::vector<std::uint8_t> good = utf8Of(text);
    for (const char* bad : kBad) {
      std::size_t at = random() % (good.size() + 1);
      while (at < good.size() && (good[at] & 0xC0) == 0x80) ++at;
      std::vector<std::uint8_t> bytes(good.begin(), good.begin() + static_cast<long>(at));
      bytes.insert(bytes.end(), bad, bad + std::strlen(bad));
      if (round % 2 == 0)
        bytes.insert(bytes.end(), good.begin() + static_cast<long>(at), good.end());
      expectSameUnits(bytes, round % 3 == 0, bytes.size());
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(Utf8Utf16Test, RandomBytesAndUnitsAreAsOnThePortablePath) {
  std::mt19937 random(4);
  for (unsigned round = 0; round < 20000; ++round) {
    std::vector<std::uint8_t> bytes(random() % 100);
    for (std::uint8_t& byte : bytes) {
      static constexpr std::uint8_t kLikely[] = {0x41, 0x80, 0xBF, 0xC3, 0xE2, 0xED, 0xF0, 0xF4};
      byte = random() % 4 == 0 ? static_cast<std::uint8_t>(random()) : kLikely[random() % 8];
    }
    expectSameUnits(bytes, round % 2 == 0, bytes.size());
    std::vector<char16_t> units(random() % 80);
    for (char16_t& unit : units) {
      static constexpr char16_t kLikely[] = {0x41, 0xE9, 0x65E5, 0xFFFF, 0, 0x7FF, 0x800, 0xD7FF};
      unit = kLikely[random() % 8];
      if (random() % 50 == 0) unit = static_cast<char16_t>(random());
    }
    for (std::size_t i = 0; i + 1 < units.size(); ++i)
      if (random() % 5 == 0) units[i] = 0xD83D, units[i + 1] = 0xDE00, ++i;
    expectSameBytes(units, round % 2 == 0, 3 * units.size());
    if (HasFatalFailure()) return;
  }
}

TEST_P(Utf8Utf16Test, SwapsUnitsInPlaceAndElsewhere) {
  for (std::size_t size = 0; size < 140; ++size) {
    std::vector<std::uint8_t> in(size);
    for (std::size_t i = 0; i < size; ++i) in[i] = static_cast<std::uint8_t>(i);
    std::vector<std::uint8_t> out(size + 1, kUntouchedByte);
    EXPECT_EQ(swapUnits(in, out.data()), size & ~std::size_t{1});
    for (std::size_t i = 0; i + 1 < size; i += 2) EXPECT_TRUE(out[i] == i + 1 && out[i + 1] == i);
    EXPECT_EQ(out[size], kUntouchedByte);
    swapUnits(in, in.data());
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + static_cast<long>(size & ~std::size_t{1}),
                           in.begin()));
  }
}

}  // namespace
}  // namespace zantrel::test

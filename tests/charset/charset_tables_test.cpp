// The finished tables against digests of the published mappings, cell by cell in both directions.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "charset/codec_runner.h"
#include "core/charset/code_page.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

/// FNV-1a of 64 bits over items that a zero byte ends.
class Digest {
 public:
  void add(std::string_view item) {
    for (const char c : item) step(static_cast<std::uint8_t>(c));
    step(0);
  }
  std::string text() const {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(value_));
    return digits;
  }

 private:
  void step(std::uint8_t byte) { value_ = (value_ ^ byte) * 0x100000001B3u; }
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

std::string utf8(const std::u16string& text) {
  return test::encodeAll(*findCodePage(codepage::kUtf8), text).output;
}

/// The character of one whole code, nothing if the bytes are not exactly one.
std::optional<std::u16string> decodeOne(Decoder& decoder, const std::string& code) {
  char16_t out[4];
  const CodecResult result = decoder.decode(asBytes(code), true, out);
  if (result.stop != CodecStop::InputEnd) return std::nullopt;
  return std::u16string(out, result.produced);
}

TEST(CharsetTablesTest, EveryCellEqualsThePublishedMappingInBothDirections) {
  for (const auto& row :
       test::readTable(std::string(ZANTREL_TEST_DATA) + "/charset/published.tsv")) {
    const CodePage* page = findCodePage(std::stoi(row.at(0)));
    ASSERT_NE(page, nullptr) << row.at(0);
    const DecoderPtr decoder = page->makeDecoder();
    std::size_t count = 0;
    Digest there;
    const auto take = [&](const std::string& code) {
      const auto text = decodeOne(*decoder, code);
      if (!text) return false;
      ++count;
      there.add(code);
      there.add(utf8(*text));
      return true;
    };
    std::string leads;
    for (int byte = 0; byte < 256; ++byte) {
      const char c = static_cast<char>(byte);
      if (!take({c})) leads += c;
    }
    for (const char lead : leads) {
      for (int byte = 0; byte < 256; ++byte) take({lead, static_cast<char>(byte)});
    }
    EXPECT_EQ(std::to_string(count), row.at(1)) << row.at(0);
    EXPECT_EQ(there.text(), row.at(2)) << row.at(0);

    const EncoderPtr encoder = page->makeEncoder();
    Digest back;
    for (char32_t point = 0; point < 0x10000; ++point) {
      const char16_t unit = static_cast<char16_t>(point);
      std::uint8_t code[8];
      const CodecResult result = encoder->encode({&unit, 1}, true, code);
      if (result.stop != CodecStop::InputEnd || result.produced > 2) continue;
      back.add(utf8({unit}));
      back.add({reinterpret_cast<const char*>(code), result.produced});
    }
    EXPECT_EQ(back.text(), row.at(3)) << row.at(0);
  }
}

}  // namespace
}  // namespace zantrel

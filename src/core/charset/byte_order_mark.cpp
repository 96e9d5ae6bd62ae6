#include "core/charset/byte_order_mark.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/charset/code_page.h"

namespace zantrel {
namespace {

constexpr std::array<std::uint8_t, 3> kUtf8{0xEF, 0xBB, 0xBF};
constexpr std::array<std::uint8_t, 2> kUtf16Le{0xFF, 0xFE};
constexpr std::array<std::uint8_t, 2> kUtf16Be{0xFE, 0xFF};
constexpr std::array<std::uint8_t, 4> kUtf32Le{0xFF, 0xFE, 0x00, 0x00};
constexpr std::array<std::uint8_t, 4> kUtf32Be{0x00, 0x00, 0xFE, 0xFF};

struct Row {
  int codePage;
  ByteSpan mark;
};
// The four-byte marks stand first: one of them begins with a two-byte mark.
constexpr std::array<Row, 5> kRows{{{codepage::kUtf32Le, kUtf32Le},
                                    {codepage::kUtf32Be, kUtf32Be},
                                    {codepage::kUtf8, kUtf8},
                                    {codepage::kUtf16Le, kUtf16Le},
                                    {codepage::kUtf16Be, kUtf16Be}}};

}  // namespace

ByteOrderMark findByteOrderMark(ByteSpan text, int named) noexcept {
  const bool utf16 = named == codepage::kUtf16Le || named == codepage::kUtf16Be;
  for (const Row& row : kRows) {
    if (utf16 && row.mark.size() == 4) continue;
    if (text.size() >= row.mark.size() &&
        std::equal(row.mark.begin(), row.mark.end(), text.begin())) {
      return {row.codePage, row.mark.size()};
    }
  }
  return {};
}

ByteSpan byteOrderMarkOf(int codePage) noexcept {
  for (const Row& row : kRows) {
    if (row.codePage == codePage) return row.mark;
  }
  return {};
}

}  // namespace zantrel

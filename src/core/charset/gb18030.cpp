// GB 18030 (GB 18030-2000, as Windows has it: U+1E3F has a four-byte code, A8BC is U+E7C7).
//
// One- and two-byte codes form a table as in other double-byte pages. The four-byte codes
// 81308130..8431A439 number the other characters of the basic plane in code-point order; the
// generator lists where that order has no gaps. Those from 90308130 on are U+10000..U+10FFFF, one
// after the other. So every code point has a code; only the unassigned four-byte codes are invalid.

#include "core/charset/gb18030.h"

#include <algorithm>
#include <iterator>

#include "core/charset/double_byte_codec.h"
#include "core/charset/tables/double_byte_tables.h"
#include "core/charset/tables/gb18030_ranges.h"

namespace zantrel {

namespace {

using tables::Gb18030Range;
using tables::kGb18030Ranges;
using Page = tables::Page54936;

constexpr std::uint32_t kSupplementary = 189000;  // number of the code 90308130
constexpr std::uint32_t kBasicEnd = 39420;        // number behind that of U+FFFF

bool isDigit(std::uint8_t byte) noexcept {
  return byte >= 0x30 && byte <= 0x39;
}
bool isLead(std::uint8_t byte) noexcept {
  return byte >= 0x81 && byte <= 0xFE;
}

/// The last range whose `member` is not above `value`; the first range begins at 0 or below.
const Gb18030Range& rangeOf(std::uint16_t Gb18030Range::*member, std::uint32_t value) noexcept {
  return *std::prev(std::upper_bound(
      std::begin(kGb18030Ranges), std::end(kGb18030Ranges), value,
      [member](std::uint32_t v, const Gb18030Range& range) { return v < range.*member; }));
}

struct FourByteCodes {
  static LongCode decode(ByteSpan in) noexcept {
    LongCode code;
    if (!isLead(in[0])) return code;
    if (in.size() < 2 || !isDigit(in[1])) return code;
    if (in.size() > 2 && !isLead(in[2])) return code;
    if (in.size() > 3 && !isDigit(in[3])) return code;
    if (in.size() < 4) {
      code.kind = LongCode::Kind::Truncated;
      return code;
    }
    const std::uint32_t number =
        (((in[0] - 0x81u) * 10 + (in[1] - 0x30u)) * 126 + (in[2] - 0x81u)) * 10 + (in[3] - 0x30u);
    code.kind = LongCode::Kind::Whole;
    code.used = 4;
    if (number < kBasicEnd) {
      const Gb18030Range& range = rangeOf(&Gb18030Range::number, number);
      code.units[0] = static_cast<char16_t>(range.first + (number - range.number));
      code.written = 1;
    } else if (number >= kSupplementary && number < kSupplementary + 0x100000) {
      splitSurrogates(number - kSupplementary + 0x10000, code.units);
      code.written = 2;
    } else {
      code.kind = LongCode::Kind::Bad;
    }
    return code;
  }

  static LongCode encode(std::span<const char16_t> in) noexcept {
    LongCode code;
    std::uint32_t number;
    if (isHighSurrogate(in[0])) {
      if (in.size() < 2 || !isLowSurrogate(in[1])) return code;
      number = kSupplementary + (joinSurrogates(in[0], in[1]) - 0x10000);
      code.used = 2;
    } else {
      if (isLowSurrogate(in[0])) return code;
      const Gb18030Range& range = rangeOf(&Gb18030Range::first, in[0]);
      number = range.number + (in[0] - range.first);
      code.used = 1;
    }
    code.kind = LongCode::Kind::Whole;
    code.written = 4;
    code.bytes[0] = static_cast<std::uint8_t>(0x81 + number / 12600);
    code.bytes[1] = static_cast<std::uint8_t>(0x30 + number / 1260 % 10);
    code.bytes[2] = static_cast<std::uint8_t>(0x81 + number / 10 % 126);
    code.bytes[3] = static_cast<std::uint8_t>(0x30 + number % 10);
    return code;
  }
};

}  // namespace

DecoderPtr makeGb18030Decoder() {
  return std::make_unique<DoubleByteDecoder<FourByteCodes>>(Page::table);
}

EncoderPtr makeGb18030Encoder() {
  return std::make_unique<DoubleByteEncoder<FourByteCodes>>(reverseOf<Page>());
}

}  // namespace zantrel

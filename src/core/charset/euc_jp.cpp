// EUC-JP with its three code sets (JIS X 0208 with the rows that Windows adds; half-width kana
// behind 8E; JIS X 0212 behind 8F).
//
// Windows reads and writes the first two only. The third is taken from code page 20932, where the
// same characters have a trail byte without its high bit, so that texts made elsewhere are read
// and written back as they were. The rows behind JIS X 0212 hold vendors' characters there, in an
// order that other makers of EUC-JP do not share, and are left out.

#include "core/charset/euc_jp.h"

#include "core/charset/double_byte_codec.h"
#include "core/charset/tables/double_byte_tables.h"

namespace zantrel {

namespace {

using tables::Page20932;
using tables::Page51932;

constexpr std::uint8_t kSingleShift3 = 0x8F;

constexpr std::uint8_t kLastRow = 0xED;  // of JIS X 0212

bool isGraphic(std::uint8_t byte) noexcept {
  return byte >= 0xA1 && byte <= 0xFE;
}

struct JisX0212 {
  static LongCode decode(ByteSpan in) noexcept {
    LongCode code;
    if (in[0] != kSingleShift3) return code;
    if (in.size() > 1 && !isGraphic(in[1])) return code;
    if (in.size() > 2 && !isGraphic(in[2])) return code;
    if (in.size() < 3) {
      code.kind = LongCode::Kind::Truncated;
      return code;
    }
    code.units[0] =
        in[1] <= kLastRow ? Page20932::table.character(in[1], in[2] & 0x7F) : kUndefined;
    code.kind = code.units[0] == kUndefined ? LongCode::Kind::Bad : LongCode::Kind::Whole;
    code.used = 3;
    code.written = 1;
    return code;
  }

  static LongCode encode(std::span<const char16_t> in) noexcept {
    LongCode code;
    const std::uint16_t pair = reverseOf<Page20932>().code(in[0]);
    if (pair < 0x100 || (pair & 0x80) != 0 || pair >> 8 > kLastRow) return code;
    code.kind = LongCode::Kind::Whole;
    code.used = 1;
    code.written = 3;
    code.bytes[0] = kSingleShift3;
    code.bytes[1] = static_cast<std::uint8_t>(pair >> 8);
    code.bytes[2] = static_cast<std::uint8_t>(pair | 0x80);
    return code;
  }
};

}  // namespace

DecoderPtr makeEucJpDecoder() {
  return std::make_unique<DoubleByteDecoder<JisX0212>>(Page51932::table);
}

EncoderPtr makeEucJpEncoder() {
  return std::make_unique<DoubleByteEncoder<JisX0212>>(reverseOf<Page51932>());
}

}  // namespace zantrel

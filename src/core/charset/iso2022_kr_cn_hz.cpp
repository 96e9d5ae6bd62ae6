// ISO-2022-KR (RFC 1557), ISO-2022-CN (RFC 1922) and HZ (RFC 1843): a seven-bit single-byte set and
// one double-byte set, switched by control sequences.
//
// The double-byte sets are those of code pages 949 and 936 with the high bits off: KS X 1001 and
// GB 2312, so that what a text means does not depend on its wrapping. Bytes with the high bit on,
// which these encodings do not have, are read as the code page itself. ESC, SO and SI cannot be
// written as characters, since a reader would obey them.
//
// ISO-2022-KR announces its set once, in front of the text; ISO-2022-CN on every line that uses it.
// Of ISO-2022-CN, plane 1 of CNS 11643 is read too; only GB 2312 is written.

#include <array>

#include "core/charset/double_byte.h"
#include "core/charset/escape_sequence.h"
#include "core/charset/iso2022.h"
#include "core/charset/shifted_codec.h"
#include "core/charset/tables/double_byte_tables.h"

namespace zantrel {
namespace {

using namespace std::string_view_literals;
using CnsPlane1 = tables::Page51950;
using tables::Page936;
using tables::Page949;

constexpr std::uint8_t kEsc = 0x1B;
constexpr std::uint8_t kShiftOut = 0x0E;
constexpr std::uint8_t kShiftIn = 0x0F;

constexpr bool isGraphic(std::uint8_t byte) noexcept {
  return byte >= 0x21 && byte <= 0x7E;
}

/// What the schemes of this file have in common.
template <class Page>
class SevenBitScheme {
 public:
  static constexpr std::string_view kHeader = "";
  static constexpr std::string_view kDesignation = "";
  static constexpr std::string_view kToDouble = "\x0E";
  static constexpr std::string_view kToSingle = "\x0F";
  static constexpr int kEscapedByte = 0;
  static constexpr bool kLineEndsDouble = false;

  char16_t single(std::uint8_t byte) const noexcept { return byte < 0x80 ? byte : kUndefined; }
  bool leads(std::uint8_t byte) const noexcept { return isGraphic(byte) || byte > 0x80; }
  bool leadsAnywhere(std::uint8_t byte) const noexcept { return byte > 0x80; }
  bool trails(std::uint8_t lead, std::uint8_t trail) const noexcept {
    return lead < 0x80 ? isGraphic(trail) : trail > 0x80;
  }
  char16_t pair(std::uint8_t lead, std::uint8_t trail) const noexcept {
    if (lead > 0x80) return Page::table.character(lead, trail);
    if (!isGraphic(trail)) return kUndefined;
    return Page::table.character(static_cast<std::uint8_t>(lead | 0x80),
                                 static_cast<std::uint8_t>(trail | 0x80));
  }
  int singleCode(char16_t unit) const noexcept {
    return unit < 0x80 && unit != kEsc && unit != kShiftOut && unit != kShiftIn ? unit : -1;
  }
  unsigned pairCode(char16_t unit) const noexcept {
    const unsigned code = reverseOf<Page>().code(unit);
    return (code & 0x8080) == 0x8080 && (code & 0x7F7F) >= 0x2121 && (code & 0x7F) >= 0x21
               ? code & 0x7F7F
               : 0;
  }
};

/// GB 2312 has no characters in rows 10 to 15 and none from row 88 on; 936 has its own there.
unsigned onlyGb2312(unsigned code) noexcept {
  const unsigned row = (code >> 8) - 0x20;
  return row <= 9 || (row >= 16 && row <= 87) ? code : 0;
}

enum class Set : std::uint8_t { Own, Cns1 };

template <std::size_t Count>
Shift escapeShift(const std::array<EscapeSequence<Set>, Count>& known, ByteSpan in, Set& set) {
  bool partial = false;
  const auto* found = findEscape<Set>(known, in, partial);
  if (found == nullptr) return {partial ? Shift::To::Unfinished : Shift::To::Broken, 1};
  set = found->meaning;
  return {Shift::To::Nowhere, static_cast<std::uint8_t>(1 + found->bytes.size())};
}

Shift shiftByte(std::uint8_t byte) noexcept {
  if (byte == kShiftOut) return {Shift::To::Double, 1};
  if (byte == kShiftIn) return {Shift::To::Single, 1};
  return {};
}

class KoreanScheme final : public SevenBitScheme<Page949> {
 public:
  static constexpr std::string_view kHeader = "\x1B$)C";

  Shift control(ByteSpan in, bool) {
    static constexpr std::array<EscapeSequence<Set>, 1> kKnown = {{{"$)C", Set::Own}}};
    Set set = Set::Own;
    return in[0] == kEsc ? escapeShift(kKnown, in, set) : shiftByte(in[0]);
  }
};

class ChineseScheme final : public SevenBitScheme<Page936> {
 public:
  static constexpr std::string_view kDesignation = "\x1B$)A";

  Shift control(ByteSpan in, bool) {
    static constexpr std::array<EscapeSequence<Set>, 2> kKnown = {
        {{"$)A", Set::Own}, {"$)G", Set::Cns1}}};
    return in[0] == kEsc ? escapeShift(kKnown, in, set_) : shiftByte(in[0]);
  }
  char16_t pair(std::uint8_t lead, std::uint8_t trail) const noexcept {
    if (set_ == Set::Own || lead > 0x80) return SevenBitScheme::pair(lead, trail);
    return isGraphic(trail) ? CnsPlane1::table.character(static_cast<std::uint8_t>(lead | 0x80),
                                                         static_cast<std::uint8_t>(trail | 0x80))
                            : kUndefined;
  }
  unsigned pairCode(char16_t unit) const noexcept {
    return onlyGb2312(SevenBitScheme::pairCode(unit));
  }

 private:
  Set set_ = Set::Own;
};

class HzScheme final : public SevenBitScheme<Page936> {
 public:
  static constexpr std::string_view kToDouble = "~{";
  static constexpr std::string_view kToSingle = "~}";
  static constexpr int kEscapedByte = '~';
  static constexpr bool kLineEndsDouble = true;  // a lost "~}" spoils one line only

  Shift control(ByteSpan in, bool inDouble) {
    if (in[0] != '~') return {};
    if (in.size() == 1) return {Shift::To::Unfinished, 1};
    switch (in[1]) {
      case '{':
        return {Shift::To::Double, 2};
      case '}':
        return {Shift::To::Single, 2};
      case '\n':
        return {Shift::To::Nowhere, 2};  // a line broken for transport only
      case '~':
        return {inDouble ? Shift::To::Broken : Shift::To::Literal, 2};
      default:
        return {Shift::To::Broken, 1};
    }
  }
  int singleCode(char16_t unit) const noexcept { return unit < 0x80 ? unit : -1; }
  unsigned pairCode(char16_t unit) const noexcept {
    return onlyGb2312(SevenBitScheme::pairCode(unit));
  }
};

}  // namespace

DecoderPtr makeIso2022KrDecoder() {
  return std::make_unique<ShiftedDecoder<KoreanScheme>>();
}
EncoderPtr makeIso2022KrEncoder() {
  return std::make_unique<ShiftedEncoder<KoreanScheme>>();
}
DecoderPtr makeIso2022CnDecoder() {
  return std::make_unique<ShiftedDecoder<ChineseScheme>>();
}
EncoderPtr makeIso2022CnEncoder() {
  return std::make_unique<ShiftedEncoder<ChineseScheme>>();
}
DecoderPtr makeHzDecoder() {
  return std::make_unique<ShiftedDecoder<HzScheme>>();
}
EncoderPtr makeHzEncoder() {
  return std::make_unique<ShiftedEncoder<HzScheme>>();
}

}  // namespace zantrel

// Code pages 50930 to 50939 (CCSIDs 930, 931, 933, 935, 937, 939): EBCDIC whose double-byte
// characters stand between SO (0E) and SI (0F).
//
// Two of these pages differ in their single-byte half only, so a page is a pair of tables. Controls
// between SO and SI are read as single bytes; a pair's bytes begin at 40. SO and SI cannot be
// written as characters, since a reader would obey them.

#include "core/charset/ebcdic_mixed.h"

#include <algorithm>
#include <array>

#include "core/charset/double_byte.h"
#include "core/charset/shifted_codec.h"
#include "core/charset/tables/double_byte_tables.h"
#include "core/charset/tables/single_byte_tables.h"

namespace zantrel {
namespace {

using namespace tables;

constexpr std::uint8_t kShiftOut = 0x0E;
constexpr std::uint8_t kShiftIn = 0x0F;
constexpr std::uint8_t kFirstOfPair = 0x40;

/// The characters of a single-byte table in their own order, each with its lowest byte.
class SingleReverse {
 public:
  explicit SingleReverse(const SingleByteTable& table) noexcept {
    for (unsigned byte = 0; byte < 256; ++byte) {
      if (byte == kShiftOut || byte == kShiftIn || table.toUnicode[byte] == kUndefined) continue;
      entries_[count_++] = {table.toUnicode[byte], static_cast<std::uint8_t>(byte)};
    }
    std::stable_sort(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(count_),
                     before);
  }

  int byteOf(char16_t unit) const noexcept {
    const auto end = entries_.begin() + static_cast<std::ptrdiff_t>(count_);
    const auto found = std::lower_bound(entries_.begin(), end, Entry{unit, 0}, before);
    return found != end && found->unit == unit ? found->byte : -1;
  }

 private:
  struct Entry {
    char16_t unit;
    std::uint8_t byte;
  };
  static bool before(const Entry& a, const Entry& b) noexcept { return a.unit < b.unit; }

  std::array<Entry, 256> entries_{};
  std::size_t count_ = 0;
};

template <const SingleByteTable& kSingle, class Page>
class EbcdicScheme {
 public:
  static constexpr std::string_view kHeader = "";
  static constexpr std::string_view kDesignation = "";
  static constexpr std::string_view kToDouble = "\x0E";
  static constexpr std::string_view kToSingle = "\x0F";
  static constexpr int kEscapedByte = 0;
  static constexpr bool kLineEndsDouble = false;

  Shift control(ByteSpan in, bool) const noexcept {
    if (in[0] == kShiftOut) return {Shift::To::Double, 1};
    if (in[0] == kShiftIn) return {Shift::To::Single, 1};
    return {};
  }
  char16_t single(std::uint8_t byte) const noexcept { return kSingle.toUnicode[byte]; }
  bool leads(std::uint8_t byte) const noexcept { return byte >= kFirstOfPair; }
  bool leadsAnywhere(std::uint8_t) const noexcept { return false; }
  bool trails(std::uint8_t, std::uint8_t trail) const noexcept { return trail >= kFirstOfPair; }
  char16_t pair(std::uint8_t lead, std::uint8_t trail) const noexcept {
    return Page::table.character(lead, trail);
  }
  int singleCode(char16_t unit) const noexcept {
    static const SingleReverse reverse(kSingle);
    return reverse.byteOf(unit);
  }
  unsigned pairCode(char16_t unit) const noexcept { return reverseOf<Page>().code(unit); }
};

template <const SingleByteTable& kSingle, class Page>
DecoderPtr makeDecoder() {
  return std::make_unique<ShiftedDecoder<EbcdicScheme<kSingle, Page>>>();
}
template <const SingleByteTable& kSingle, class Page>
EncoderPtr makeEncoder() {
  return std::make_unique<ShiftedEncoder<EbcdicScheme<kSingle, Page>>>();
}

}  // namespace

// clang-format off
DecoderPtr makeEbcdicDecoder50930() { return makeDecoder<kPage50930, EbcdicJapanese>(); }
EncoderPtr makeEbcdicEncoder50930() { return makeEncoder<kPage50930, EbcdicJapanese>(); }
DecoderPtr makeEbcdicDecoder50931() { return makeDecoder<kPage50931, EbcdicJapanese>(); }
EncoderPtr makeEbcdicEncoder50931() { return makeEncoder<kPage50931, EbcdicJapanese>(); }
DecoderPtr makeEbcdicDecoder50933() { return makeDecoder<kPage50933, EbcdicKorean>(); }
EncoderPtr makeEbcdicEncoder50933() { return makeEncoder<kPage50933, EbcdicKorean>(); }
DecoderPtr makeEbcdicDecoder50935() { return makeDecoder<kPage50935, EbcdicChinese>(); }
EncoderPtr makeEbcdicEncoder50935() { return makeEncoder<kPage50935, EbcdicChinese>(); }
DecoderPtr makeEbcdicDecoder50937() { return makeDecoder<kPage50937, EbcdicTaiwanese>(); }
EncoderPtr makeEbcdicEncoder50937() { return makeEncoder<kPage50937, EbcdicTaiwanese>(); }
DecoderPtr makeEbcdicDecoder50939() { return makeDecoder<kPage50939, EbcdicJapanese>(); }
EncoderPtr makeEbcdicEncoder50939() { return makeEncoder<kPage50939, EbcdicJapanese>(); }
// clang-format on

}  // namespace zantrel

// Writing ISO-2022-JP (RFC 1468) as code pages 50220, 50221 and 50222.
//
// A character is written as its code in 932, by arithmetic. The three pages differ in how
// half-width kana are written: 50220 writes the full-width kana, joining a voice mark to its
// letter; 50221 writes ESC ( I; 50222 writes SO and SI. ESC, SO and SI cannot be written as
// characters, since a reader would obey them.

#include <array>

#include "core/charset/iso2022_jp.h"
#include "core/charset/utf16_units.h"

namespace zantrel {
namespace {

using namespace iso2022jp;
using tables::Page932;

// From U+FF61: the full-width forms of the half-width kana.
constexpr char16_t kFullWidth[] =
    u"\u3002\u300C\u300D\u3001\u30FB\u30F2\u30A1\u30A3\u30A5\u30A7\u30A9\u30E3\u30E5\u30E7\u30C3"
    u"\u30FC\u30A2\u30A4\u30A6\u30A8\u30AA\u30AB\u30AD\u30AF\u30B1\u30B3\u30B5\u30B7\u30B9\u30BB"
    u"\u30BD\u30BF\u30C1\u30C4\u30C6\u30C8\u30CA\u30CB\u30CC\u30CD\u30CE\u30CF\u30D2\u30D5\u30D8"
    u"\u30DB\u30DE\u30DF\u30E0\u30E1\u30E2\u30E4\u30E6\u30E8\u30E9\u30EA\u30EB\u30EC\u30ED\u30EF"
    u"\u30F3\u309B\u309C";
constexpr char16_t kVoiceMark = 0xFF9E;
constexpr char16_t kHalfVoiceMark = 0xFF9F;
static_assert(std::size(kFullWidth) == kLastKana - kFirstKana + 2);

constexpr bool isKana(char16_t unit) noexcept {
  return unit >= kFirstKana && unit <= kLastKana;
}
constexpr bool takesHalfVoice(char16_t kana) noexcept {
  return kana >= 0xFF8A && kana <= 0xFF8E;
}
constexpr bool takesVoice(char16_t kana) noexcept {
  return kana == 0xFF73 || (kana >= 0xFF76 && kana <= 0xFF84) || takesHalfVoice(kana);
}

/// Full-width form of a kana, with its mark if `mark` is one that it takes (`joined` says so).
constexpr char16_t fullWidth(char16_t kana, char16_t mark, bool& joined) noexcept {
  const char16_t plain = kFullWidth[kana - kFirstKana];
  const bool voiced = mark == kVoiceMark && takesVoice(kana);
  const bool halfVoiced = mark == kHalfVoiceMark && takesHalfVoice(kana);
  joined = voiced || halfVoiced;
  if (!joined) return plain;
  if (kana == 0xFF73) return 0x30F4;
  return static_cast<char16_t>(plain + (voiced ? 1 : 2));
}

/// The IBM extensions, FA40 to FC4B in 932, lie behind row 94, where ISO-2022-JP cannot write them.
/// All of them stand somewhere else too, most in the NEC rows 89 to 92; here is where.
class IbmExtensions {
 public:
  IbmExtensions() noexcept {
    const DoubleByteReverse& written = reverseOf<Page932>();
    for (unsigned row = kFirstNecRow; row <= kLastNecRow; ++row)
      for (unsigned column = kFirstGraphic; column <= kLastGraphic; ++column) {
        const char16_t unit = characterOf(Page932::table, shiftJisOf(row, column));
        const unsigned code = unit == kUndefined ? 0 : written.code(unit);
        if (code >= kFirst) jis_[code - kFirst] = static_cast<std::uint16_t>((row << 8) | column);
      }
    for (unsigned i = 0; i < std::size(jis_); ++i) {
      const char16_t unit = characterOf(Page932::table, kFirst + i);
      if (unit != kUndefined && jis_[i] == 0)
        jis_[i] = static_cast<std::uint16_t>(iso2022jp::jisOf(written.code(unit)));
    }
  }
  /// 0 for a code that is none of them.
  unsigned jisOf(unsigned shiftJis) const noexcept {
    return shiftJis >= kFirst && shiftJis <= kLast ? jis_[shiftJis - kFirst] : 0;
  }

 private:
  static constexpr unsigned kFirstNecRow = 0x79;
  static constexpr unsigned kLastNecRow = 0x7C;
  static constexpr unsigned kFirst = 0xFA40;
  static constexpr unsigned kLast = 0xFC4B;

  std::uint16_t jis_[kLast - kFirst + 1] = {};
};

const IbmExtensions& ibmExtensions() noexcept {
  static const IbmExtensions extensions;
  return extensions;
}

enum class Set : std::uint8_t { Ascii, Kana, Jis0208 };

class Iso2022JpEncoder final : public Encoder {
 public:
  Iso2022JpEncoder(KanaForm form, const DoubleByteReverse& reverse) noexcept
      : form_(form), reverse_(&reverse) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    constexpr std::size_t kMost = 6;  // SI, an escape sequence, two bytes
    CodecResult result;
    while (result.consumed < in.size()) {
      char16_t unit = in[result.consumed];
      std::size_t length = 1;
      if (isKana(unit) && form_ == KanaForm::FullWidth) {
        const bool more = result.consumed + 1 < in.size();
        if (!more && !last && takesVoice(unit)) {
          result.stop = CodecStop::Truncated;
          return result;
        }
        bool joined = false;
        unit = fullWidth(unit, more ? in[result.consumed + 1] : char16_t{0}, joined);
        if (joined) length = 2;
      }
      Set set = Set::Ascii;
      const unsigned code = codeOf(unit, set);
      if (code == kNone) {
        stopAtUnit(in.subspan(result.consumed), last, result);
        return result;
      }
      if (out.size() - result.produced < kMost) {
        result.stop = CodecStop::OutputFull;
        return result;
      }
      result.produced += switchTo(set, out.data() + result.produced);
      if (set == Set::Jis0208) out[result.produced++] = static_cast<std::uint8_t>(code >> 8);
      out[result.produced++] = static_cast<std::uint8_t>(code & 0xFF);
      result.consumed += length;
    }
    return result;
  }

  std::size_t finish(std::span<std::uint8_t> out) override {
    return out.size() < 4 ? 0 : switchTo(Set::Ascii, out.data());
  }
  void reset() override { *this = Iso2022JpEncoder(form_, *reverse_); }

 private:
  static constexpr unsigned kNone = 0xFFFFFFFF;

  unsigned codeOf(char16_t unit, Set& set) const noexcept {
    if (unit < 0x80) return unit == kEsc || unit == kShiftOut || unit == kShiftIn ? kNone : unit;
    if (isKana(unit)) {
      set = Set::Kana;
      return std::uint32_t{kFirstGraphic} + (unit - kFirstKana);
    }
    set = Set::Jis0208;
    const unsigned shiftJis = reverse_->code(unit);
    if (shiftJis < 0x100) return kNone;
    unsigned code = jisOf(shiftJis);
    if (code == 0) code = ibmExtensions().jisOf(shiftJis);
    return code != 0 ? code : kNone;
  }

  /// Writes what leads to a set and counts the bytes.
  std::size_t switchTo(Set set, std::uint8_t* out) noexcept {
    std::size_t count = 0;
    const bool byShift = set == Set::Kana && form_ == KanaForm::Shift;
    if (shiftedOut_ != byShift) {
      out[count++] = byShift ? kShiftOut : kShiftIn;
      shiftedOut_ = byShift;
    }
    if (byShift || set == set_) return count;
    set_ = set;
    out[count++] = kEsc;
    out[count++] = set == Set::Jis0208 ? '$' : '(';
    out[count++] = set == Set::Kana ? 'I' : 'B';
    return count;
  }

  KanaForm form_;
  const DoubleByteReverse* reverse_;
  Set set_ = Set::Ascii;
  bool shiftedOut_ = false;
};

}  // namespace

EncoderPtr makeIso2022JpEncoder(KanaForm form, Duplicates duplicates) {
  return std::make_unique<Iso2022JpEncoder>(
      form, duplicates == Duplicates::Merged ? reverseOf<Page932>() : distinct932Reverse());
}

}  // namespace zantrel

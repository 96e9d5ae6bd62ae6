// ISO-2022-JP (RFC 1468, with the extensions of code pages 50220, 50221 and 50222).
//
// The double-byte set is that of code page 932 by arithmetic on the two bytes, so that what a text
// means does not depend on its wrapping; the NEC and IBM extensions of 932 come along as rows 13
// and 89 to 92. All three pages are read alike and take in what mail of their kind is found to
// hold: JIS C 6226-1978 and JIS X 0208-1990 as JIS X 0208, JIS X 0201 Roman as ASCII (deliberate:
// 932 has no yen sign or overline of its own at 5C and 7E), half-width kana by ESC ( I, by SO and
// SI, or as bytes A1 to DF, JIS X 0212, and GB 2312 and KS X 1001 as in ISO-2022-JP-2.
//
// They differ in how half-width kana are written: 50220 writes the full-width kana, joining a voice
// mark to its letter; 50221 writes ESC ( I; 50222 writes SO and SI. ESC, SO and SI cannot be
// written as characters, since a reader would obey them.

#include <algorithm>
#include <array>

#include "core/charset/double_byte.h"
#include "core/charset/escape_sequence.h"
#include "core/charset/iso2022.h"
#include "core/charset/tables/double_byte_tables.h"
#include "core/charset/utf16_units.h"

namespace zantrel {
namespace {

using tables::Page20932;
using tables::Page932;
using tables::Page936;
using tables::Page949;

constexpr std::uint8_t kEsc = 0x1B;
constexpr std::uint8_t kShiftOut = 0x0E;
constexpr std::uint8_t kShiftIn = 0x0F;
constexpr char16_t kFirstKana = 0xFF61;  // at 21, or A1 with the high bit
constexpr std::uint8_t kLastKanaByte = 0x5F;

enum class Set : std::uint8_t { Ascii, Kana, Jis0208, Jis0212, Gb2312, KsX1001, Unchanged };

constexpr std::array<EscapeSequence<Set>, 12> kSequences = {{
    {"(B", Set::Ascii},
    {"(J", Set::Ascii},
    {"(H", Set::Ascii},  // Swedish ASCII, a common mistake for Roman
    {"(I", Set::Kana},
    {"$@", Set::Jis0208},
    {"$B", Set::Jis0208},
    {"$(@", Set::Jis0208},
    {"$(B", Set::Jis0208},
    {"&@", Set::Unchanged},  // announces the 1990 revision
    {"$(D", Set::Jis0212},
    {"$A", Set::Gb2312},
    {"$(C", Set::KsX1001},
}};

constexpr bool isGraphic(std::uint8_t byte) noexcept {
  return byte >= 0x21 && byte <= 0x7E;
}

/// Row and column (21 to 7E each) as the bytes of Shift_JIS.
constexpr unsigned shiftJisOf(unsigned row, unsigned column) noexcept {
  const unsigned half = (row - 0x21) / 2;
  const unsigned lead = half + (half < 0x1F ? 0x81 : 0xC1);
  const unsigned trail = row % 2 == 0 ? column + 0x7E : column + (column < 0x60 ? 0x1F : 0x20);
  return (lead << 8) | trail;
}

/// The reverse; 0 for what lies beyond row 94.
constexpr unsigned jisOf(unsigned shiftJis) noexcept {
  const unsigned lead = shiftJis >> 8;
  const unsigned trail = shiftJis & 0xFF;
  if (lead > 0xEF) return 0;
  const unsigned half = lead - (lead < 0xA0 ? 0x81 : 0xC1);
  if (trail >= 0x9F) return ((2 * half + 0x22) << 8) | (trail - 0x7E);
  return ((2 * half + 0x21) << 8) | (trail - (trail < 0x7F ? 0x1F : 0x20));
}
static_assert(shiftJisOf(0x21, 0x21) == 0x8140 && shiftJisOf(0x7E, 0x7E) == 0xEFFC);
static_assert(jisOf(0x8140) == 0x2121 && jisOf(0xEFFC) == 0x7E7E && jisOf(0x889F) == 0x3021);

char16_t character(Set set, std::uint8_t lead, std::uint8_t trail) noexcept {
  const auto high = [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte | 0x80); };
  switch (set) {
    case Set::Jis0208: {
      const unsigned code = shiftJisOf(lead, trail);
      return Page932::table.character(static_cast<std::uint8_t>(code >> 8),
                                      static_cast<std::uint8_t>(code & 0xFF));
    }
    case Set::Jis0212:
      return Page20932::table.character(high(lead), trail);
    case Set::Gb2312:
      return Page936::table.character(high(lead), high(trail));
    case Set::KsX1001:
      return Page949::table.character(high(lead), high(trail));
    default:
      return kUndefined;
  }
}

class Iso2022JpDecoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    CodecResult result;
    while (result.consumed < in.size()) {
      const ByteSpan rest = in.subspan(result.consumed);
      std::size_t length = 1;
      bool partial = false;
      if (rest[0] == kEsc) {
        const auto* sequence = findEscape<Set>(kSequences, rest, partial);
        if (sequence != nullptr) {
          if (sequence->meaning != Set::Unchanged) set_ = sequence->meaning;
          result.consumed += 1 + sequence->bytes.size();
          continue;
        }
      } else if (rest[0] == kShiftOut || rest[0] == kShiftIn) {
        shiftedOut_ = rest[0] == kShiftOut;
        ++result.consumed;
        continue;
      }
      const char16_t unit = partial ? kUndefined : read(rest, length, partial);
      if (partial && !last) {
        result.stop = CodecStop::Truncated;
        return result;
      }
      if (unit == kUndefined) {
        result.stop = CodecStop::Invalid;
        result.badLength = static_cast<std::uint8_t>(length);
        return result;
      }
      if (result.produced == out.size()) {
        result.stop = CodecStop::OutputFull;
        return result;
      }
      out[result.produced++] = unit;
      result.consumed += length;
    }
    return result;
  }

  void reset() override { *this = Iso2022JpDecoder(); }
  std::unique_ptr<Decoder> clone() const override {
    return std::make_unique<Iso2022JpDecoder>(*this);
  }

 private:
  /// The character at the front of `rest` and its length; `partial` if its second byte is missing.
  char16_t read(ByteSpan rest, std::size_t& length, bool& partial) const noexcept {
    const std::uint8_t byte = rest[0];
    if (byte >= 0x80) return byte >= 0xA1 && byte <= 0xDF ? kana(byte - 0x80u) : kUndefined;
    if (!isGraphic(byte)) return byte == kEsc ? kUndefined : byte;
    if (shiftedOut_ || set_ == Set::Kana) return byte > kLastKanaByte ? kUndefined : kana(byte);
    if (set_ == Set::Ascii) return byte;
    partial = rest.size() == 1;
    if (partial || !isGraphic(rest[1])) return kUndefined;
    length = 2;
    return character(set_, byte, rest[1]);
  }
  static char16_t kana(unsigned byte) noexcept {
    return static_cast<char16_t>(kFirstKana + (byte - 0x21));
  }

  Set set_ = Set::Ascii;
  bool shiftedOut_ = false;
};

// From U+FF61: the full-width forms of the half-width kana.
constexpr char16_t kFullWidth[] =
    u"\u3002\u300C\u300D\u3001\u30FB\u30F2\u30A1\u30A3\u30A5\u30A7\u30A9\u30E3\u30E5\u30E7\u30C3"
    u"\u30FC\u30A2\u30A4\u30A6\u30A8\u30AA\u30AB\u30AD\u30AF\u30B1\u30B3\u30B5\u30B7\u30B9\u30BB"
    u"\u30BD\u30BF\u30C1\u30C4\u30C6\u30C8\u30CA\u30CB\u30CC\u30CD\u30CE\u30CF\u30D2\u30D5\u30D8"
    u"\u30DB\u30DE\u30DF\u30E0\u30E1\u30E2\u30E4\u30E6\u30E8\u30E9\u30EA\u30EB\u30EC\u30ED\u30EF"
    u"\u30F3\u309B\u309C";
constexpr char16_t kLastKana = 0xFF9F;
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

/// The NEC rows 89 to 92 hold the IBM extensions again. 932 writes them behind row 94, where
/// ISO-2022-JP cannot; here is each one's code in the NEC rows.
class NecRows {
 public:
  NecRows() noexcept {
    for (unsigned row = 0x79; row <= 0x7C; ++row)
      for (unsigned column = 0x21; column <= 0x7E; ++column) {
        const char16_t unit = character(Set::Jis0208, static_cast<std::uint8_t>(row),
                                        static_cast<std::uint8_t>(column));
        if (unit != kUndefined)
          entries_[count_++] = {unit, static_cast<std::uint16_t>((row << 8) | column)};
      }
    std::sort(entries_.begin(), end(), before);
  }
  unsigned codeOf(char16_t unit) const noexcept {
    const auto found = std::lower_bound(entries_.begin(), end(), Entry{unit, 0}, before);
    return found != end() && found->unit == unit ? found->code : 0;
  }

 private:
  struct Entry {
    char16_t unit;
    std::uint16_t code;
  };
  using Entries = std::array<Entry, std::size_t{4} * 94>;
  static bool before(const Entry& a, const Entry& b) noexcept { return a.unit < b.unit; }
  Entries::const_iterator end() const noexcept {
    return entries_.begin() + static_cast<std::ptrdiff_t>(count_);
  }
  Entries::iterator end() noexcept {
    return entries_.begin() + static_cast<std::ptrdiff_t>(count_);
  }

  Entries entries_{};
  std::size_t count_ = 0;
};

enum class KanaForm : std::uint8_t { FullWidth, Escape, Shift };

class Iso2022JpEncoder final : public Encoder {
 public:
  explicit Iso2022JpEncoder(KanaForm form) noexcept : form_(form) {}

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
  void reset() override { *this = Iso2022JpEncoder(form_); }

 private:
  static constexpr unsigned kNone = 0xFFFFFFFF;

  static unsigned codeOf(char16_t unit, Set& set) noexcept {
    if (unit < 0x80) return unit == kEsc || unit == kShiftOut || unit == kShiftIn ? kNone : unit;
    if (isKana(unit)) {
      set = Set::Kana;
      return 0x21u + (unit - kFirstKana);
    }
    set = Set::Jis0208;
    const unsigned shiftJis = reverseOf<Page932>().code(unit);
    if (shiftJis < 0x100) return kNone;
    unsigned code = jisOf(shiftJis);
    if (code == 0) {
      static const NecRows necRows;
      code = necRows.codeOf(unit);
    }
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
  Set set_ = Set::Ascii;
  bool shiftedOut_ = false;
};

}  // namespace

DecoderPtr makeIso2022JpDecoder() {
  return std::make_unique<Iso2022JpDecoder>();
}
EncoderPtr makeIso2022JpEncoder50220() {
  return std::make_unique<Iso2022JpEncoder>(KanaForm::FullWidth);
}
EncoderPtr makeIso2022JpEncoder50221() {
  return std::make_unique<Iso2022JpEncoder>(KanaForm::Escape);
}
EncoderPtr makeIso2022JpEncoder50222() {
  return std::make_unique<Iso2022JpEncoder>(KanaForm::Shift);
}

}  // namespace zantrel

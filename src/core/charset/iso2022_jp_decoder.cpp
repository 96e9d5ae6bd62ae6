// Reading ISO-2022-JP (RFC 1468, with the extensions of code pages 50220, 50221 and 50222).
//
// The double-byte set is that of code page 932 by arithmetic on the two bytes, so that what a text
// means does not depend on its wrapping; the NEC extensions of 932 come along as rows 13 and 89 to
// 92. All three pages are read alike and take in what mail of their kind is found to hold:
// JIS C 6226-1978 and JIS X 0208-1990 as JIS X 0208, JIS X 0201 Roman as ASCII (deliberate: 932 has
// no yen sign or overline of its own at 5C and 7E), half-width kana by ESC ( I, by SO and SI, or as
// bytes A1 to DF, JIS X 0212, and GB 2312 and KS X 1001 as in ISO-2022-JP-2.
//
// Pairs of JIS X 0208 and ASCII have loops of their own; everything else goes item by item.

#include <algorithm>
#include <array>
#include <cstring>

#include "core/charset/escape_sequence.h"
#include "core/charset/iso2022_jp.h"

namespace zantrel {
namespace {

using namespace iso2022jp;
using tables::Page20932;
using tables::Page932;
using tables::Page936;
using tables::Page949;

constexpr std::uint8_t kLastKanaByte = 0x5F;

enum class Set : std::uint8_t { Ascii, Kana, Jis0208, Jis0212, Gb2312, KsX1001, Unchanged };

// The usual ones first.
constexpr std::array<EscapeSequence<Set>, 12> kSequences = {{
    {"$B", Set::Jis0208},
    {"(B", Set::Ascii},
    {"(J", Set::Ascii},
    {"(H", Set::Ascii},  // Swedish ASCII, a common mistake for Roman
    {"(I", Set::Kana},
    {"$@", Set::Jis0208},
    {"$(@", Set::Jis0208},
    {"$(B", Set::Jis0208},
    {"&@", Set::Unchanged},  // announces the 1990 revision
    {"$(D", Set::Jis0212},
    {"$A", Set::Gb2312},
    {"$(C", Set::KsX1001},
}};

// What most of a text consists of.
constexpr std::string_view kToJis0208 = "\x1B$B";
constexpr std::string_view kToAscii = "\x1B(B";

/// JIS X 0208 as the bytes of a text number it.
class JisPlane {
 public:
  explicit JisPlane(const DoubleByteTable& page) noexcept {
    for (unsigned row = kFirstGraphic; row <= kLastGraphic; ++row)
      for (unsigned column = kFirstGraphic; column <= kLastGraphic; ++column)
        cells_[row - kFirstGraphic][column - kFirstGraphic] =
            characterOf(page, shiftJisOf(row, column));
  }
  /// kUndefined for bytes that are not graphic, too.
  char16_t character(unsigned row, unsigned column) const noexcept {
    const unsigned i = row - kFirstGraphic;
    const unsigned k = column - kFirstGraphic;
    return i < kGraphics && k < kGraphics ? cells_[i][k] : kUndefined;
  }

 private:
  char16_t cells_[kGraphics][kGraphics];
};

const JisPlane& planeOf(Duplicates duplicates) noexcept {
  if (duplicates == Duplicates::Merged) {
    static const JisPlane merged(Page932::table);
    return merged;
  }
  static const JisPlane apart(distinct932());
  return apart;
}

char16_t foreignCharacter(Set set, std::uint8_t lead, std::uint8_t trail) noexcept {
  const auto high = [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte | 0x80); };
  switch (set) {
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
  explicit Iso2022JpDecoder(const JisPlane& plane) noexcept : plane_(&plane) {}

  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    CodecResult result;
    do {
      // Texts go to and fro between two sets, so that one turn mostly does both.
      if (current_ == Set::Jis0208) {
        readPairs(in, out, result);
        takeEscape(in, kToAscii, Set::Ascii, result);
      }
      if (current_ == Set::Ascii) {
        readAscii(in, out, result);
        takeEscape(in, kToJis0208, Set::Jis0208, result);
      }
    } while (result.consumed < in.size() && readItem(in, last, out, result));
    return result;
  }

  void reset() override { *this = Iso2022JpDecoder(*plane_); }
  std::unique_ptr<Decoder> clone() const override {
    return std::make_unique<Iso2022JpDecoder>(*this);
  }

 private:
  /// Obeys an escape sequence if it is what follows.
  void takeEscape(ByteSpan in, std::string_view sequence, Set set, CodecResult& result) noexcept {
    if (asText(in.subspan(result.consumed)).starts_with(sequence)) {
      result.consumed += sequence.size();
      select(set, shiftedOut_);
    }
  }

  /// Pairs of JIS X 0208, up to the first byte or pair that is something else.
  void readPairs(ByteSpan in, std::span<char16_t> out, CodecResult& result) const noexcept {
    const std::size_t most =
        std::min((in.size() - result.consumed) / 2, out.size() - result.produced);
    const std::uint8_t* const p = in.data() + result.consumed;
    char16_t* const o = out.data() + result.produced;
    std::size_t i = 0;
    for (; i < most; ++i) {
      const char16_t unit = plane_->character(p[2 * i], p[2 * i + 1]);
      if (unit == kUndefined) break;
      o[i] = unit;
    }
    result.consumed += 2 * i;
    result.produced += i;
  }

  static bool isPlain(std::uint8_t byte) noexcept {
    return byte < 0x80 && byte != kEsc && byte != kShiftOut && byte != kShiftIn;
  }

  /// Whether eight bytes are ASCII without a control (a byte below 20 borrows into its high bit).
  static bool isPrintableWord(const std::uint8_t* p) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080u;
    constexpr std::uint64_t kBlanks = 0x2020202020202020u;
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return (((word - kBlanks) | word) & kHighBits) == 0;
  }

  /// ASCII, up to the first byte that shifts or does not belong to it.
  static void readAscii(ByteSpan in, std::span<char16_t> out, CodecResult& result) noexcept {
    const std::size_t most = std::min(in.size() - result.consumed, out.size() - result.produced);
    const std::uint8_t* const p = in.data() + result.consumed;
    char16_t* const o = out.data() + result.produced;
    std::size_t i = 0;
    while (i < most) {
      if (most - i >= sizeof(std::uint64_t) && isPrintableWord(p + i)) {
        for (std::size_t k = 0; k < sizeof(std::uint64_t); ++k) o[i + k] = p[i + k];
        i += sizeof(std::uint64_t);
      } else if (isPlain(p[i])) {
        o[i] = p[i];
        ++i;
      } else {
        break;
      }
    }
    result.consumed += i;
    result.produced += i;
  }

  /// An escape sequence, a shift or one character; false when the result says why to stop.
  bool readItem(ByteSpan in, bool last, std::span<char16_t> out, CodecResult& result) {
    const ByteSpan rest = in.subspan(result.consumed);
    std::size_t length = 1;
    bool partial = false;
    if (rest[0] == kEsc) {
      const auto* sequence = findEscape<Set>(kSequences, rest, partial);
      if (sequence != nullptr) {
        if (sequence->meaning != Set::Unchanged) select(sequence->meaning, shiftedOut_);
        result.consumed += 1 + sequence->bytes.size();
        return true;
      }
    } else if (rest[0] == kShiftOut || rest[0] == kShiftIn) {
      select(set_, rest[0] == kShiftOut);
      ++result.consumed;
      return true;
    }
    const char16_t unit = partial ? kUndefined : read(rest, length, partial);
    if (partial && !last) {
      result.stop = CodecStop::Truncated;
      return false;
    }
    if (unit == kUndefined) {
      result.stop = CodecStop::Invalid;
      result.badLength = static_cast<std::uint8_t>(length);
      return false;
    }
    if (result.produced == out.size()) {
      result.stop = CodecStop::OutputFull;
      return false;
    }
    out[result.produced++] = unit;
    result.consumed += length;
    return true;
  }

  /// The character at the front of `rest` and its length; `partial` if its second byte is missing.
  char16_t read(ByteSpan rest, std::size_t& length, bool& partial) const noexcept {
    const std::uint8_t byte = rest[0];
    if (byte >= 0x80) return byte >= 0xA1 && byte <= 0xDF ? kana(byte - 0x80u) : kUndefined;
    if (!isGraphic(byte)) return byte == kEsc ? kUndefined : byte;
    if (current_ == Set::Kana) return byte > kLastKanaByte ? kUndefined : kana(byte);
    if (current_ == Set::Ascii) return byte;
    partial = rest.size() == 1;
    if (partial || !isGraphic(rest[1])) return kUndefined;
    length = 2;
    return current_ == Set::Jis0208 ? plane_->character(byte, rest[1])
                                    : foreignCharacter(current_, byte, rest[1]);
  }
  void select(Set set, bool shiftedOut) noexcept {
    set_ = set;
    shiftedOut_ = shiftedOut;
    current_ = shiftedOut ? Set::Kana : set;
  }
  static char16_t kana(unsigned byte) noexcept {
    return static_cast<char16_t>(kFirstKana + (byte - kFirstGraphic));
  }

  const JisPlane* plane_;
  Set set_ = Set::Ascii;  // that the last escape sequence chose
  bool shiftedOut_ = false;
  Set current_ = Set::Ascii;  // what follows from the two
};

}  // namespace

DecoderPtr makeIso2022JpDecoder(Duplicates duplicates) {
  return std::make_unique<Iso2022JpDecoder>(planeOf(duplicates));
}

}  // namespace zantrel

#pragma once
// The codecs of the double-byte pages as templates: some charsets add codes of three or four bytes
// to a double-byte table, and say in a `Long` class how those are read and written. Only the
// engines of such charsets include this file.

#include <algorithm>
#include <cstring>
#include <memory>

#include "core/charset/ascii_run.h"
#include "core/charset/double_byte.h"
#include "core/charset/utf16_units.h"

namespace zantrel {

/// What a Long class found at the start of the bytes or units it was given.
struct LongCode {
  enum class Kind : std::uint8_t {
    None,       ///< no long code begins here
    Whole,      ///< `used` of the input become the `written` first items of the output
    Bad,        ///< `used` bytes look like a code, but mean nothing
    Truncated,  ///< the input ends inside a code
  };
  Kind kind = Kind::None;
  std::uint8_t used = 0;
  std::uint8_t written = 0;
  char16_t units[2] = {};      ///< output of decoding
  std::uint8_t bytes[4] = {};  ///< output of encoding
};

/// A page without long codes.
struct NoLongCodes {
  static LongCode decode(ByteSpan) noexcept { return {}; }
  static LongCode encode(std::span<const char16_t>) noexcept { return {}; }
};

template <class Long>
class DoubleByteDecoder final : public Decoder {
 public:
  explicit DoubleByteDecoder(const DoubleByteTable& table) : table_(table) {}

  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    const std::uint8_t* p = in.data();
    const std::uint8_t* const end = p + in.size();
    char16_t* o = out.data();
    char16_t* const outEnd = o + out.size();
    CodecResult result;
    while (true) {
      decodePairs(p, end, o, outEnd);
      if (p == end) break;
      if (o == outEnd) {
        result.stop = CodecStop::OutputFull;
        break;
      }
      if (!decodeOther(p, end, last, o, outEnd, result)) break;
    }
    result.consumed = static_cast<std::size_t>(p - in.data());
    result.produced = static_cast<std::size_t>(o - out.data());
    return result;
  }

 private:
  /// Pairs, and single ASCII bytes between them, up to a longer run of ASCII, the first byte or
  /// pair that is something else, or the end of a span.
  void decodePairs(const std::uint8_t*& in, const std::uint8_t* end, char16_t*& out,
                   const char16_t* outEnd) const noexcept {
    const DoubleByteRow* const rows = table_.rows;
    const char16_t* const cells = table_.cells;
    const unsigned firstBeyondAscii = table_.asciiLow ? 0x80 : 0;
    const std::uint8_t* p = in;
    char16_t* o = out;
    const auto take = [&](const std::uint8_t* stop) {
      while (p < stop) {
        if (p[0] < firstBeyondAscii) {
          if (beginsAsciiRun(p, end)) return false;
          *o++ = *p++;
          continue;
        }
        const DoubleByteRow& row = rows[p[0]];
        const unsigned cell = static_cast<unsigned>(p[1]) - row.first;
        if (cell >= row.count) return false;
        const char16_t unit = cells[row.offset + cell];
        if (unit == kUndefined) return false;
        *o++ = unit;
        p += 2;
      }
      return true;
    };
    // An item takes at least one byte and writes one unit, so that one bound guards both spans.
    while (end - p >= 2 && o != outEnd && take(p + std::min(end - p - 1, outEnd - o))) {
    }
    in = p;
    out = o;
  }

  /// Whether so much ASCII follows that the vector loop is worth its start.
  static bool beginsAsciiRun(const std::uint8_t* p, const std::uint8_t* end) noexcept {
    std::uint64_t word;
    if (end - p < static_cast<std::ptrdiff_t>(sizeof word)) return false;
    std::memcpy(&word, p, sizeof word);
    return (word & 0x8080808080808080u) == 0;
  }

  /// A run of ASCII, one other character, or the trouble that ended the pairs (false).
  bool decodeOther(const std::uint8_t*& p, const std::uint8_t* end, bool last, char16_t*& o,
                   char16_t* outEnd, CodecResult& result) const noexcept {
    if (*p < 0x80 && table_.asciiLow) {
      const auto run = widenAscii(p, static_cast<std::size_t>(std::min(end - p, outEnd - o)), o);
      p += run;
      o += run;
      return true;
    }
    const LongCode code = Long::decode({p, end});
    if (code.kind == LongCode::Kind::Whole) {
      if (outEnd - o < code.written) {
        result.stop = CodecStop::OutputFull;
        return false;
      }
      p += code.used;
      o = std::copy_n(code.units, code.written, o);
      return true;
    }
    const bool isLead = table_.rows[*p].count != 0;
    if (!isLead && table_.single[*p] != kUndefined) {
      *o++ = table_.single[*p++];
      return true;
    }
    const bool truncated = code.kind == LongCode::Kind::Truncated || (isLead && end - p == 1);
    result.stop = truncated && !last ? CodecStop::Truncated : CodecStop::Invalid;
    result.badLength = 1;
    if (code.kind == LongCode::Kind::Bad) {
      result.badLength = code.used;
    } else if (code.kind == LongCode::Kind::None && end - p > 1 && isEmptyCell(p[0], p[1])) {
      result.badLength = 2;
    }
    return false;
  }

  /// A pair of a lead byte and a trail byte beyond ASCII that has no character is one bad item. Any
  /// other byte behind a lead byte is read afresh.
  bool isEmptyCell(std::uint8_t lead, std::uint8_t trail) const noexcept {
    const DoubleByteRow& row = table_.rows[lead];
    return static_cast<unsigned>(trail) - row.first < row.count && trail >= 0x80;
  }

  const DoubleByteTable& table_;
};

template <class Long>
class DoubleByteEncoder final : public Encoder {
 public:
  explicit DoubleByteEncoder(const DoubleByteReverse& reverse) : reverse_(reverse) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    const char16_t* p = in.data();
    const char16_t* const end = p + in.size();
    std::uint8_t* o = out.data();
    std::uint8_t* const outEnd = o + out.size();
    const char16_t* careful = p;  // up to here a block would be tried in vain
    CodecResult result;
    while (true) {
      if (p >= careful) {
        encodeBlocks(p, end, o, outEnd);
        careful = p + std::min(end - p, kBlockUnits);
      }
      encodePairs(p, end, o, outEnd);
      if (p == end) break;
      if (o == outEnd) {
        result.stop = CodecStop::OutputFull;
        break;
      }
      if (!encodeOther(p, end, last, o, outEnd, result)) break;
    }
    result.consumed = static_cast<std::size_t>(p - in.data());
    result.produced = static_cast<std::size_t>(o - out.data());
    return result;
  }

 private:
  static constexpr std::ptrdiff_t kBlockUnits = 16;

  /// Whole blocks of codes of one and two bytes, while both spans have room for them. Texts mix
  /// words of pairs with single blanks and line ends; a branch between the two kinds would be
  /// mispredicted at nearly every word.
  void encodeBlocks(const char16_t*& in, const char16_t* end, std::uint8_t*& out,
                    const std::uint8_t* outEnd) const noexcept {
    while (end - in >= kBlockUnits && outEnd - out >= 2 * kBlockUnits) {
      if (reverse_.asciiLow && isAsciiBlock(in)) {
        for (std::ptrdiff_t i = 0; i < kBlockUnits; ++i) out[i] = static_cast<std::uint8_t>(in[i]);
        out += kBlockUnits;
      } else if (!encodeBlock(in, out)) {
        return;
      }
      in += kBlockUnits;
    }
  }

  static bool isAsciiBlock(const char16_t* p) noexcept {
    std::uint64_t words[kBlockUnits * sizeof *p / sizeof(std::uint64_t)];
    std::memcpy(words, p, sizeof words);
    return ((words[0] | words[1] | words[2] | words[3]) & 0xFF80FF80FF80FF80u) == 0;
  }

  /// Encodes a block without branches: two bytes are stored for every unit, of which the second is
  /// overwritten where the code is single. False, with nothing taken, when a unit has no code of
  /// one or two bytes or is U+0000.
  bool encodeBlock(const char16_t* p, std::uint8_t*& out) const noexcept {
    const std::uint16_t* const cells = reverse_.cells;  // the bytes written may alias reverse_
    std::uint8_t* o = out;
    std::uint32_t missing = 0;
    for (std::ptrdiff_t i = 0; i < kBlockUnits; ++i) {
      const std::uint32_t cell = cells[p[i]];
      o[0] = static_cast<std::uint8_t>(cell);
      o[1] = static_cast<std::uint8_t>(cell >> 8);
      o += 1 + ((cell + 0xFF00) >> 16);  // two if above 0xFF; compilers make a branch of ?:
      missing |= cell - 1;               // 0 alone borrows from the highest bit
    }
    if (missing >> 31 != 0) return false;
    out = o;
    return true;
  }

  /// Units of two-byte codes up to the first of another kind, or the end of a span.
  void encodePairs(const char16_t*& in, const char16_t* end, std::uint8_t*& out,
                   const std::uint8_t* outEnd) const noexcept {
    const std::uint16_t* const cells = reverse_.cells;
    const char16_t* p = in;
    std::uint8_t* o = out;
    const auto most = std::min(end - p, (outEnd - o) / 2);
    for (const char16_t* const stop = p + most; p != stop; ++p) {
      const std::uint16_t cell = cells[*p];
      if (cell < 0x100) break;
      o[0] = static_cast<std::uint8_t>(cell);
      o[1] = static_cast<std::uint8_t>(cell >> 8);
      o += 2;
    }
    in = p;
    out = o;
  }

  /// A run of ASCII, one other character, or trouble (false).
  bool encodeOther(const char16_t*& p, const char16_t* end, bool last, std::uint8_t*& o,
                   std::uint8_t* outEnd, CodecResult& result) const noexcept {
    if (*p < 0x80 && reverse_.asciiLow) {
      const auto run = narrowAscii(p, static_cast<std::size_t>(std::min(end - p, outEnd - o)), o);
      p += run;
      o += run;
      return true;
    }
    const std::uint16_t code = reverse_.code(*p);
    if (code >= 0x100) {  // encodePairs() had no room for it
      result.stop = CodecStop::OutputFull;
      return false;
    }
    if (code != 0 || *p == 0) {
      *o++ = static_cast<std::uint8_t>(code);
      ++p;
      return true;
    }
    const LongCode item = Long::encode({p, end});
    if (item.kind != LongCode::Kind::Whole) {
      stopAtUnit({p, end}, last, result);
      return false;
    }
    if (outEnd - o < item.written) {
      result.stop = CodecStop::OutputFull;
      return false;
    }
    p += item.used;
    o = std::copy_n(item.bytes, item.written, o);
    return true;
  }

  const DoubleByteReverse& reverse_;
};

}  // namespace zantrel

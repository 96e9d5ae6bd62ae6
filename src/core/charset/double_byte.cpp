// Double-byte code pages: Shift_JIS, GBK, Big5, EUC-KR, Johab and their relatives.
//
// Nearly all have ASCII in the lower half, so runs of ASCII are copied by vector; pairs go through
// one load of the row and one of the cell. A lead byte with a trail byte that cannot follow it is
// invalid alone, so that the byte behind it is read afresh; a pair without a character is invalid
// as a whole unless its trail byte is ASCII, which is kept.
//
// Encoding looks a unit up in two stages (see DoubleByteReverse). Characters beyond the basic plane
// are unmappable: none of these pages has any.

#include "core/charset/double_byte.h"

#include <algorithm>
#include <memory>

#include "core/charset/ascii_run.h"
#include "core/charset/utf16_units.h"

namespace zantrel {

namespace {

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
  /// Pairs up to the first byte or pair that is something else, or the end of a span.
  void decodePairs(const std::uint8_t*& in, const std::uint8_t* end, char16_t*& out,
                   const char16_t* outEnd) const noexcept {
    const DoubleByteRow* const rows = table_.rows;
    const char16_t* const cells = tables::kDoubleByteCells;
    const std::uint8_t* p = in;
    char16_t* o = out;
    const auto most = std::min((end - p) / 2, outEnd - o);
    for (const char16_t* const stop = o + most; o != stop; p += 2) {
      const DoubleByteRow row = rows[p[0]];
      const unsigned cell = static_cast<unsigned>(p[1]) - row.first;
      if (cell >= row.count) break;
      const char16_t unit = cells[row.offset + cell];
      if (unit == kUndefined) break;
      *o++ = unit;
    }
    in = p;
    out = o;
  }

  /// A run of ASCII, one other single byte, or the trouble that ended the pairs (false).
  bool decodeOther(const std::uint8_t*& p, const std::uint8_t* end, bool last, char16_t*& o,
                   char16_t* outEnd, CodecResult& result) const noexcept {
    if (*p < 0x80 && table_.asciiLow) {
      const std::size_t run =
          widenAscii(p, static_cast<std::size_t>(std::min(end - p, outEnd - o)), o);
      p += run;
      o += run;
      return true;
    }
    if (table_.rows[*p].count == 0) {
      const char16_t unit = table_.single[*p];
      if (unit != kUndefined) {
        *o++ = unit;
        ++p;
        return true;
      }
    } else if (end - p == 1 && !last) {
      result.stop = CodecStop::Truncated;
      return false;
    }
    result.stop = CodecStop::Invalid;
    result.badLength = end - p > 1 ? badLength(p[0], p[1]) : 1;
    return false;
  }

  std::uint8_t badLength(std::uint8_t lead, std::uint8_t trail) const noexcept {
    const DoubleByteRow& row = table_.rows[lead];
    const bool canFollow = static_cast<unsigned>(trail) - row.first < row.count;
    return canFollow && trail >= 0x80 ? 2 : 1;
  }

  const DoubleByteTable& table_;
};

class DoubleByteEncoder final : public Encoder {
 public:
  explicit DoubleByteEncoder(const DoubleByteReverse& reverse) : reverse_(reverse) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    const char16_t* p = in.data();
    const char16_t* const end = p + in.size();
    std::uint8_t* o = out.data();
    std::uint8_t* const outEnd = o + out.size();
    CodecResult result;
    while (true) {
      encodePairs(p, end, o, outEnd);
      if (p == end) break;
      if (*p < 0x80 && reverse_.asciiLow) {
        const std::size_t run =
            narrowAscii(p, static_cast<std::size_t>(std::min(end - p, outEnd - o)), o);
        p += run;
        o += run;
        if (run != 0) continue;
      } else if (const std::uint16_t code = reverse_.code(*p); code == 0 && *p != 0) {
        stopAtUnit({p, end}, last, result);
        break;
      } else if (code < 0x100 && o != outEnd) {
        *o++ = static_cast<std::uint8_t>(code);
        ++p;
        continue;
      }
      result.stop = CodecStop::OutputFull;
      break;
    }
    result.consumed = static_cast<std::size_t>(p - in.data());
    result.produced = static_cast<std::size_t>(o - out.data());
    return result;
  }

 private:
  /// Units of two-byte codes up to the first of another kind, or the end of a span.
  void encodePairs(const char16_t*& in, const char16_t* end, std::uint8_t*& out,
                   const std::uint8_t* outEnd) const noexcept {
    const std::uint16_t* const cells = reverse_.cells;
    const char16_t* p = in;
    std::uint8_t* o = out;
    const auto most = std::min(end - p, (outEnd - o) / 2);
    for (const char16_t* const stop = p + most; p != stop; ++p) {
      const std::uint16_t code = cells[reverse_.blockAt[*p / DoubleByteReverse::kBlockUnits] +
                                       *p % DoubleByteReverse::kBlockUnits];
      if (code < 0x100) break;
      o[0] = static_cast<std::uint8_t>(code >> 8);
      o[1] = static_cast<std::uint8_t>(code);
      o += 2;
    }
    in = p;
    out = o;
  }

  const DoubleByteReverse& reverse_;
};

/// Gives the cell of a unit, opening its block when it is the first there.
std::uint16_t& cellFor(char16_t unit, std::span<std::uint16_t> cells, DoubleByteReverse& reverse,
                       std::size_t& used) noexcept {
  std::uint16_t& at = reverse.blockAt[unit / DoubleByteReverse::kBlockUnits];
  if (at == 0) {
    at = static_cast<std::uint16_t>(used);
    used += DoubleByteReverse::kBlockUnits;
  }
  return cells[at + unit % DoubleByteReverse::kBlockUnits];
}

}  // namespace

void deriveReverse(const DoubleByteTable& table, std::span<std::uint16_t> cells,
                   DoubleByteReverse& reverse) noexcept {
  std::size_t used = DoubleByteReverse::kBlockUnits;  // block 0 stays empty
  reverse.cells = cells.data();
  reverse.asciiLow = table.asciiLow;
  const auto offer = [&](char16_t unit, unsigned code) {
    if (unit == kUndefined) return;
    std::uint16_t& cell = cellFor(unit, cells, reverse, used);
    if (cell == 0) cell = static_cast<std::uint16_t>(code);  // the lowest code wins
  };
  if (table.single != nullptr) {
    for (unsigned byte = 0; byte < 0x100; ++byte) offer(table.single[byte], byte);
  }
  for (unsigned lead = 0; lead < 0x100; ++lead) {
    const DoubleByteRow& row = table.rows[lead];
    for (unsigned k = 0; k < row.count; ++k) {
      offer(tables::kDoubleByteCells[row.offset + k], lead << 8 | (row.first + k));
    }
  }
  for (const std::uint16_t code : table.preferred) {
    const char16_t unit =
        table.character(static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code));
    cellFor(unit, cells, reverse, used) = code;
  }
}

DecoderPtr makeDoubleByteDecoder(const DoubleByteTable& table) {
  return std::make_unique<DoubleByteDecoder>(table);
}

EncoderPtr makeDoubleByteEncoder(const DoubleByteReverse& reverse) {
  return std::make_unique<DoubleByteEncoder>(reverse);
}

}  // namespace zantrel

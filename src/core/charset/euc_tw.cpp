// EUC-TW: plane 1 of CNS 11643 as two bytes, every plane as 8E, A0 + plane, and two bytes.
//
// A plane's cells hold the lower 16 bits of a code point; a bit map per plane says which of them
// belong to U+20000..U+2FFFF. Plane 1 is read in both forms and written as two bytes. The way back
// of the other planes is derived when the page is first written to: 131,072 units in blocks of 64,
// the upper half for the supplementary plane, each cell a code and its plane.

#include "core/charset/euc_tw.h"

#include <algorithm>

#include "core/charset/double_byte_codec.h"
#include "core/charset/tables/double_byte_tables.h"
#include "core/charset/tables/euc_tw_planes.h"

namespace zantrel {

namespace {

using tables::kEucTwPlanes;
using tables::kEucTwReverseBlocks;
using Page = tables::Page51950;

constexpr std::uint8_t kSingleShift2 = 0x8E;
constexpr std::size_t kBlockUnits = 64;

bool isGraphic(std::uint8_t byte) noexcept {
  return byte >= 0xA1 && byte <= 0xFE;
}

const tables::EucTwPlane* findPlane(unsigned number) noexcept {
  const auto plane = std::find_if(std::begin(kEucTwPlanes), std::end(kEucTwPlanes),
                                  [number](const auto& p) { return p.number == number; });
  return plane == std::end(kEucTwPlanes) ? nullptr : plane;
}

bool isSupplementary(const tables::EucTwPlane& plane, unsigned lead, unsigned trail) noexcept {
  const unsigned bit = (lead - 0xA1) * 94 + (trail - 0xA1);
  return plane.supplementary != nullptr && (plane.supplementary[bit / 8] >> (bit % 8) & 1) != 0;
}

/// Codes of the characters outside plane 1.
class PlanesReverse {
 public:
  PlanesReverse() noexcept {
    std::uint16_t used = 1;  // block 0 stays empty
    for (const auto& plane : kEucTwPlanes) {
      if (plane.number == 1) continue;  // its characters have two-byte codes
      for (unsigned lead = 0xA1; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0xA1; trail <= 0xFE; ++trail) add(plane, lead, trail, used);
      }
    }
  }

  struct Cell {
    std::uint16_t code;
    std::uint8_t plane;
  };
  /// `key` is the code unit, plus 0x10000 for the lower 16 bits of a supplementary character.
  Cell at(std::uint32_t key) const noexcept {
    const std::size_t cell = blockOf_[key / kBlockUnits] * kBlockUnits + key % kBlockUnits;
    return {codes_[cell], planes_[cell]};
  }

 private:
  void add(const tables::EucTwPlane& plane, unsigned lead, unsigned trail,
           std::uint16_t& used) noexcept {
    const char16_t unit =
        plane.table->character(static_cast<std::uint8_t>(lead), static_cast<std::uint8_t>(trail));
    const bool supplementary = isSupplementary(plane, lead, trail);
    if (unit == kUndefined && !supplementary) return;
    const std::uint32_t key = unit + (supplementary ? 0x10000u : 0u);
    std::uint16_t& block = blockOf_[key / kBlockUnits];
    if (block == 0) block = used++;
    const std::size_t cell = block * kBlockUnits + key % kBlockUnits;
    if (codes_[cell] != 0) return;
    codes_[cell] = static_cast<std::uint16_t>(lead << 8 | trail);
    planes_[cell] = static_cast<std::uint8_t>(plane.number);
  }

  std::uint16_t blockOf_[0x20000 / kBlockUnits] = {};
  std::uint16_t codes_[kEucTwReverseBlocks * kBlockUnits] = {};
  std::uint8_t planes_[kEucTwReverseBlocks * kBlockUnits] = {};
};

const PlanesReverse& planesReverse() noexcept {
  static const PlanesReverse reverse;
  return reverse;
}

struct FourByteCodes {
  static LongCode decode(ByteSpan in) noexcept {
    LongCode code;
    if (in[0] != kSingleShift2) return code;
    for (std::size_t i = 1; i < std::min<std::size_t>(in.size(), 4); ++i) {
      if (!isGraphic(in[i])) return code;
    }
    if (in.size() < 4) {
      code.kind = LongCode::Kind::Truncated;
      return code;
    }
    code.kind = LongCode::Kind::Bad;
    code.used = 4;
    const tables::EucTwPlane* plane = findPlane(in[1] - 0xA0u);
    if (plane == nullptr) return code;
    const char16_t unit = plane->table->character(in[2], in[3]);
    if (isSupplementary(*plane, in[2], in[3])) {
      splitSurrogates(0x20000u + unit, code.units);
      code.written = 2;
    } else if (unit != kUndefined) {
      code.units[0] = unit;
      code.written = 1;
    } else {
      return code;
    }
    code.kind = LongCode::Kind::Whole;
    return code;
  }

  static LongCode encode(std::span<const char16_t> in) noexcept {
    LongCode code;
    std::uint32_t key = in[0];
    code.used = 1;
    if (isHighSurrogate(in[0]) && in.size() > 1 && isLowSurrogate(in[1])) {
      const char32_t point = joinSurrogates(in[0], in[1]);
      if (point >> 16 != 2) return code;
      key = 0x10000 + (point & 0xFFFF);
      code.used = 2;
    }
    const PlanesReverse::Cell cell = planesReverse().at(key);
    if (cell.code == 0) return code;
    code.kind = LongCode::Kind::Whole;
    code.written = 4;
    code.bytes[0] = kSingleShift2;
    code.bytes[1] = static_cast<std::uint8_t>(0xA0 + cell.plane);
    code.bytes[2] = static_cast<std::uint8_t>(cell.code >> 8);
    code.bytes[3] = static_cast<std::uint8_t>(cell.code);
    return code;
  }
};

}  // namespace

DecoderPtr makeEucTwDecoder() {
  return std::make_unique<DoubleByteDecoder<FourByteCodes>>(Page::table);
}

EncoderPtr makeEucTwEncoder() {
  return std::make_unique<DoubleByteEncoder<FourByteCodes>>(reverseOf<Page>());
}

}  // namespace zantrel

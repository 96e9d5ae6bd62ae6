// Single-byte code pages.
//
// Decoding looks every byte up in the page's row of 256 code points, eight a step; the check for
// undefined cells is made once a step.
//
// Encoding uses two stages that are built from the row when the encoder is made: the high byte of a
// code unit picks a block of 256 bytes, the low byte a cell in it. A zero cell means "not in the
// page", except for the unit that byte 00 itself stands for.
//
// With AVX-512 groups of 64 go through permutations instead (single_byte_x86.cpp).
//
// Limits: characters of the basic plane only; a surrogate pair is always unmappable.

#include "core/charset/single_byte.h"

#include <algorithm>
#include <iterator>

#include "core/charset/single_byte_kernels.h"
#include "core/charset/utf16_units.h"
#include "platform/cpu_features.h"

namespace zantrel {

SingleByteReverse::SingleByteReverse(const SingleByteTable& table) : zeroUnit(table.toUnicode[0]) {
  std::size_t blocks = 1;
  for (const char16_t unit : table.toUnicode) {
    if (unit == kUndefined || blockOf[unit >> 8] != 0) continue;
    blockOf[unit >> 8] = static_cast<std::uint8_t>(blocks++);
  }
  cells.resize(blocks * 256);
  std::uint8_t filled[0x10000 / kWindowUnits] = {};  // 256 characters at most: the last may wrap
  for (int byte = 255; byte >= 0; --byte) {  // of two bytes for one character the lower wins
    const char16_t unit = table.toUnicode[byte];
    if (unit == kUndefined) continue;
    cells[cellOf(unit)] = static_cast<std::uint8_t>(byte);
    ++filled[unit / kWindowUnits];
  }
  for (std::uint16_t& number : window) {
    std::uint8_t* const fullest = std::max_element(std::begin(filled), std::end(filled));
    number = static_cast<std::uint16_t>(fullest - filled);
    *fullest = 0;
  }
}

std::size_t decodeSinglePortable(const SingleByteTable& table, const std::uint8_t* in,
                                 std::size_t count, char16_t* out) noexcept {
  const char16_t* const row = table.toUnicode;
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    bool undefined = false;
    for (std::size_t k = 0; k < 8; ++k) {
      const char16_t unit = row[in[i + k]];
      undefined |= unit == kUndefined;
      out[i + k] = unit;
    }
    if (undefined) break;
  }
  for (; i < count; ++i) {
    const char16_t unit = row[in[i]];
    if (unit == kUndefined) break;
    out[i] = unit;
  }
  return i;
}

std::size_t encodeSinglePortable(const SingleByteReverse& reverse, const char16_t* in,
                                 std::size_t count, std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; i < count; ++i) {
    const std::uint8_t byte = reverse.cells[reverse.cellOf(in[i])];
    if (byte == 0 && in[i] != reverse.zeroUnit) break;
    out[i] = byte;
  }
  return i;
}

namespace {

/// Alternates between the two loops: `fast` takes whole groups and stops at a group it cannot do,
/// which `exact` then converts as far as the first item that is really bad.
template <class Fast, class Exact>
std::size_t inGroups(std::size_t count, const Fast& fast, const Exact& exact) {
  constexpr std::size_t kGroup = 64;
  std::size_t done = 0;
  while (true) {
    done += fast(done);
    const std::size_t part = std::min(count - done, kGroup);
    const std::size_t converted = exact(done, part);
    done += converted;
    if (converted < part || done == count) return done;
  }
}

class SingleByteDecoder final : public Decoder {
 public:
  explicit SingleByteDecoder(const SingleByteTable& table) : table_(table) {}

  CodecResult decode(ByteSpan in, bool /*last*/, std::span<char16_t> out) override {
    const std::size_t count = std::min(in.size(), out.size());
    const std::size_t done = decodeRun(in.data(), count, out.data());
    CodecResult result{done, done, CodecStop::InputEnd, 0};
    if (done < count) {
      result.stop = CodecStop::Invalid;
      result.badLength = 1;
    } else if (count < in.size()) {
      result.stop = CodecStop::OutputFull;
    }
    return result;
  }

 private:
  std::size_t decodeRun(const std::uint8_t* in, std::size_t count, char16_t* out) const noexcept {
#ifdef ZT_X86_64
    if (cpuFeatures().avx512) {
      return inGroups(
          count,
          [&](std::size_t at) { return decodeSingleAvx512(table_, in + at, count - at, out + at); },
          [&](std::size_t at, std::size_t part) {
            return decodeSinglePortable(table_, in + at, part, out + at);
          });
    }
#endif
    return decodeSinglePortable(table_, in, count, out);
  }

  const SingleByteTable& table_;
};

class SingleByteEncoder final : public Encoder {
 public:
  explicit SingleByteEncoder(const SingleByteTable& table) : reverse_(table) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    const std::size_t count = std::min(in.size(), out.size());
    const std::size_t done = encodeRun(in.data(), count, out.data());
    CodecResult result{done, done, CodecStop::InputEnd, 0};
    if (done < count) {
      stopAtUnit(in.subspan(done), last, result);
    } else if (count < in.size()) {
      result.stop = CodecStop::OutputFull;
    }
    return result;
  }

 private:
  std::size_t encodeRun(const char16_t* in, std::size_t count, std::uint8_t* out) const noexcept {
#ifdef ZT_X86_64
    if (cpuFeatures().avx512) {
      return inGroups(
          count,
          [&](std::size_t at) {
            return encodeSingleAvx512(reverse_, in + at, count - at, out + at);
          },
          [&](std::size_t at, std::size_t part) {
            return encodeSinglePortable(reverse_, in + at, part, out + at);
          });
    }
#endif
    return encodeSinglePortable(reverse_, in, count, out);
  }

  SingleByteReverse reverse_;
};

}  // namespace

DecoderPtr makeSingleByteDecoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteDecoder>(table);
}

EncoderPtr makeSingleByteEncoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteEncoder>(table);
}

}  // namespace zantrel

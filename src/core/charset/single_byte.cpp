// Single-byte code pages.
//
// Decoding looks every byte up in the page's row of 256 code points, eight a step; the check for
// undefined cells is made once a step.
//
// Encoding uses two stages that are built from the row when the encoder is made: the high byte of a
// code unit picks a block of 256 bytes, the low byte a cell in it. A zero cell means "not in the
// page", except for the unit that byte 00 itself stands for.
//
// With AVX-512 and AVX2 groups of items go through permutations instead (the `_x86` files).
//
// Limits: characters of the basic plane only; a surrogate pair is always unmappable.

#include "core/charset/single_byte.h"

#include <algorithm>
#include <array>

#include "core/charset/single_byte_kernels.h"
#include "core/charset/utf16_units.h"
#include "platform/cpu_features.h"

namespace zantrel {

SingleByteReverse::SingleByteReverse(const SingleByteTable& table) : zeroUnit(table.toUnicode[0]) {
  constexpr std::size_t kWindowsPerBlock = 256 / kWindowUnits;
  std::array<std::uint8_t, 257> highByteOf{};
  std::size_t blocks = 1;
  for (const char16_t unit : table.toUnicode) {
    if (unit == kUndefined || blockOf[unit >> 8] != 0) continue;
    highByteOf[blocks] = static_cast<std::uint8_t>(unit >> 8);
    blockOf[unit >> 8] = static_cast<std::uint8_t>(blocks++);
  }
  cells.resize(blocks * 256);
  std::vector<std::uint8_t> filled(std::max(blocks * kWindowsPerBlock, kWindows));
  for (int byte = 255; byte >= 0; --byte) {  // of two bytes for one character the lower wins
    const char16_t unit = table.toUnicode[byte];
    if (unit == kUndefined) continue;
    cells[cellOf(unit)] = static_cast<std::uint8_t>(byte);
    ++filled[cellOf(unit) / kWindowUnits];
  }
  for (std::uint16_t& number : window) {
    const auto fullest = std::max_element(filled.begin(), filled.end());
    const auto index = static_cast<std::size_t>(fullest - filled.begin());
    number = static_cast<std::uint16_t>(highByteOf[index / kWindowsPerBlock] * kWindowsPerBlock +
                                        index % kWindowsPerBlock);
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

/// A vector loop and the portable one for the same work; the former null where there is none.
/// `fast` takes whole groups and stops at a group it cannot do, which `exact` then converts as far
/// as the first item that is really bad.
template <class Table, class In, class Out>
struct Loops {
  using Loop = std::size_t (*)(const Table&, const In*, std::size_t, Out*) noexcept;

  std::size_t run(const Table& table, const In* in, std::size_t count, Out* out) const noexcept {
    if (fast == nullptr) return exact(table, in, count, out);
    constexpr std::size_t kGroup = 64;
    std::size_t done = 0;
    while (true) {
      done += fast(table, in + done, count - done, out + done);
      const std::size_t part = std::min(count - done, kGroup);
      const std::size_t converted = exact(table, in + done, part, out + done);
      done += converted;
      if (converted < part || done == count) return done;
    }
  }

  Loop fast;
  Loop exact;
};

using DecodeLoops = Loops<SingleByteTable, std::uint8_t, char16_t>;
using EncodeLoops = Loops<SingleByteReverse, char16_t, std::uint8_t>;

DecodeLoops chooseDecodeLoops([[maybe_unused]] bool lowerHalfIsAscii) noexcept {
  DecodeLoops loops{nullptr, decodeSinglePortable};
#ifdef ZT_X86_64
  if (cpuFeatures().avx512) {
    loops.fast = decodeSingleAvx512;
  } else if (cpuFeatures().avx2 && lowerHalfIsAscii) {
    loops.fast = decodeUpperHalfAvx2;
  }
#endif
  return loops;
}

EncodeLoops chooseEncodeLoops() noexcept {
  EncodeLoops loops{nullptr, encodeSinglePortable};
#ifdef ZT_X86_64
  if (cpuFeatures().avx512) {
    loops.fast = encodeSingleAvx512;
  } else if (cpuFeatures().avx2) {
    loops.fast = encodeSingleAvx2;
  }
#endif
  return loops;
}

bool lowerHalfIsAscii(const SingleByteTable& table) noexcept {
  bool all = true;
  for (unsigned byte = 0; byte < 0x80; ++byte) all &= table.toUnicode[byte] == byte;
  return all;
}

class SingleByteDecoder final : public Decoder {
 public:
  explicit SingleByteDecoder(const SingleByteTable& table) : table_(table) {}

  CodecResult decode(ByteSpan in, bool /*last*/, std::span<char16_t> out) override {
    const std::size_t count = std::min(in.size(), out.size());
    const std::size_t done = loops_.run(table_, in.data(), count, out.data());
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
  const SingleByteTable& table_;
  DecodeLoops loops_ = chooseDecodeLoops(lowerHalfIsAscii(table_));
};

class SingleByteEncoder final : public Encoder {
 public:
  explicit SingleByteEncoder(const SingleByteTable& table) : reverse_(table) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    const std::size_t count = std::min(in.size(), out.size());
    const std::size_t done = loops_.run(reverse_, in.data(), count, out.data());
    CodecResult result{done, done, CodecStop::InputEnd, 0};
    if (done < count) {
      stopAtUnit(in.subspan(done), last, result);
    } else if (count < in.size()) {
      result.stop = CodecStop::OutputFull;
    }
    return result;
  }

 private:
  SingleByteReverse reverse_;
  EncodeLoops loops_ = chooseEncodeLoops();
};

}  // namespace

DecoderPtr makeSingleByteDecoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteDecoder>(table);
}

EncoderPtr makeSingleByteEncoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteEncoder>(table);
}

}  // namespace zantrel

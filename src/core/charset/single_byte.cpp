// Single-byte code pages.
//
// Decoding looks every byte up in the page's row of 256 code points. Runs go through eight bytes a
// step; the check for undefined cells is made once a step, on the OR of the comparisons.
//
// Encoding uses two stages that are built from the row when the encoder is made: the high byte of a
// code unit picks a block of 256 bytes, the low byte a cell in it. Block 0 has no characters. A
// zero cell means "not in the page", except for the unit that byte 00 itself stands for.
//
// Limits: characters of the basic plane only; a surrogate pair is always unmappable.

#include "core/charset/single_byte.h"

#include <algorithm>
#include <vector>

namespace zantrel {

namespace {

bool isHighSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xD800;
}
bool isLowSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xDC00;
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
  /// How many bytes were decoded before the end or an undefined one.
  std::size_t decodeRun(const std::uint8_t* in, std::size_t count, char16_t* out) const noexcept {
    const char16_t* const row = table_.toUnicode;
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

  const SingleByteTable& table_;
};

class SingleByteEncoder final : public Encoder {
 public:
  explicit SingleByteEncoder(const SingleByteTable& table) : zeroUnit_(table.toUnicode[0]) {
    std::size_t blocks = 1;
    for (const char16_t unit : table.toUnicode) {
      if (unit == kUndefined || blockOf_[unit >> 8] != 0) continue;
      blockOf_[unit >> 8] = static_cast<std::uint8_t>(blocks++);
    }
    cells_.resize(blocks * 256);
    for (int byte = 255; byte >= 0; --byte) {  // of two bytes for one character the lower wins
      const char16_t unit = table.toUnicode[byte];
      if (unit != kUndefined) cell(unit) = static_cast<std::uint8_t>(byte);
    }
  }

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    const std::size_t count = std::min(in.size(), out.size());
    std::size_t i = 0;
    for (; i < count; ++i) {
      const std::uint8_t byte = cell(in[i]);
      if (byte == 0 && in[i] != zeroUnit_) break;
      out[i] = byte;
    }
    CodecResult result{i, i, CodecStop::InputEnd, 0};
    if (i < count) {
      stopAt(in.subspan(i), last, result);
    } else if (count < in.size()) {
      result.stop = CodecStop::OutputFull;
    }
    return result;
  }

 private:
  std::uint8_t& cell(char16_t unit) noexcept {
    return cells_[static_cast<std::size_t>(blockOf_[unit >> 8]) * 256 + (unit & 0xFF)];
  }

  static void stopAt(std::span<const char16_t> rest, bool last, CodecResult& result) noexcept {
    result.stop = CodecStop::Unmappable;
    result.badLength = 1;
    if (isHighSurrogate(rest[0])) {
      if (rest.size() > 1) {
        if (isLowSurrogate(rest[1])) {
          result.badLength = 2;
        } else {
          result.stop = CodecStop::Invalid;
        }
      } else {
        result.stop = last ? CodecStop::Invalid : CodecStop::Truncated;
      }
    } else if (isLowSurrogate(rest[0])) {
      result.stop = CodecStop::Invalid;
    }
  }

  char16_t zeroUnit_;
  std::uint8_t blockOf_[256] = {};
  std::vector<std::uint8_t> cells_;
};

}  // namespace

DecoderPtr makeSingleByteDecoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteDecoder>(table);
}

EncoderPtr makeSingleByteEncoder(const SingleByteTable& table) {
  return std::make_unique<SingleByteEncoder>(table);
}

}  // namespace zantrel

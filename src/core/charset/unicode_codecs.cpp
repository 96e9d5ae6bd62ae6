// Codecs of UTF-8, UTF-16 and UTF-32 (The Unicode Standard 15.0, sections 3.9 and 3.10).
//
// UTF-8 is the kernels of utf8_utf16 as they stand. UTF-16 is copied in blocks that hold no
// surrogate and checked pair by pair elsewhere; a surrogate without partner is two invalid bytes.
// In UTF-32 a value above 10FFFF or in the surrogate range is four invalid bytes. What is left of a
// unit at the end of the input is one error.

#include "core/charset/unicode_codecs.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/charset/utf8_utf16.h"

namespace zantrel {
namespace {

constexpr std::size_t kBlock = 32;  // units copied at once when none of them is a surrogate

constexpr bool isSurrogate(std::uint32_t unit) noexcept {
  return (unit & 0xF800) == 0xD800;
}
constexpr bool isHigh(std::uint32_t unit) noexcept {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLow(std::uint32_t unit) noexcept {
  return (unit & 0xFC00) == 0xDC00;
}

CodecResult stopAt(std::size_t consumed, std::size_t produced, CodecStop stop,
                   std::size_t badLength = 0) noexcept {
  return {consumed, produced, stop, static_cast<std::uint8_t>(badLength)};
}

template <std::endian Order>
char16_t loadUnit(const std::uint8_t* bytes) noexcept {
  constexpr int kHigh = Order == std::endian::big ? 0 : 1;
  return static_cast<char16_t>((bytes[kHigh] << 8) | bytes[1 - kHigh]);
}

template <std::endian Order>
void storeUnit(std::uint8_t* bytes, char16_t unit) noexcept {
  constexpr int kHigh = Order == std::endian::big ? 0 : 1;
  bytes[kHigh] = static_cast<std::uint8_t>(unit >> 8);
  bytes[1 - kHigh] = static_cast<std::uint8_t>(unit & 0xFF);
}

template <std::endian Order>
std::uint32_t loadWord(const std::uint8_t* bytes) noexcept {
  std::uint32_t word = 0;
  for (std::size_t k = 0; k < 4; ++k)
    word = (word << 8) | bytes[Order == std::endian::big ? k : 3 - k];
  return word;
}

template <std::endian Order>
void storeWord(std::uint8_t* bytes, std::uint32_t word) noexcept {
  for (std::size_t k = 0; k < 4; ++k) {
    bytes[Order == std::endian::big ? 3 - k : k] = static_cast<std::uint8_t>(word);
    word >>= 8;
  }
}

class Utf8Decoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    return utf8ToUtf16(in, last, out);
  }
};

class Utf8Encoder final : public Encoder {
 public:
  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    return utf16ToUtf8(in, last, out);
  }
};

/// Copies whole blocks without surrogates and counts the units done.
template <class Load, class Store>
std::size_t copyPlainBlocks(std::size_t count, Load load, Store store) noexcept {
  std::size_t i = 0;
  for (; count - i >= kBlock; i += kBlock) {
    std::uint32_t surrogates = 0;
    for (std::size_t k = 0; k < kBlock; ++k) {
      const char16_t unit = load(i + k);
      surrogates |= isSurrogate(unit) ? 1u : 0u;
      store(i + k, unit);
    }
    if (surrogates != 0) break;
  }
  return i;
}

/// Copies UTF-16 from `load` to `store`, whole pairs only. `size` and `room` count units.
template <class Load, class Store>
CodecResult copyUtf16(std::size_t size, std::size_t room, bool last, Load load, Store store) {
  std::size_t i = 0;
  while (i < size) {
    i += copyPlainBlocks(
        std::min(size, room) - i, [&](std::size_t k) { return load(i + k); },
        [&](std::size_t k, char16_t unit) { store(i + k, unit); });
    const std::size_t blockEnd = std::min(size, i + kBlock);
    while (i < blockEnd) {
      const char16_t unit = load(i);
      const std::size_t length = isSurrogate(unit) ? 2 : 1;
      if (length == 2) {
        if (!isHigh(unit)) return stopAt(i, i, CodecStop::Invalid, 1);
        if (i + 1 == size)
          return last ? stopAt(i, i, CodecStop::Invalid, 1) : stopAt(i, i, CodecStop::Truncated);
        if (!isLow(load(i + 1))) return stopAt(i, i, CodecStop::Invalid, 1);
      }
      if (room - i < length) return stopAt(i, i, CodecStop::OutputFull);
      store(i, unit);
      if (length == 2) store(i + 1, load(i + 1));
      i += length;
    }
  }
  return stopAt(i, i, CodecStop::InputEnd);
}

template <std::endian Order>
class Utf16Decoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    const std::size_t size = in.size() / 2;
    // The odd byte of an unfinished unit follows: a high surrogate before it may yet be completed.
    const bool odd = in.size() % 2 != 0;
    CodecResult result = copyUtf16(
        size, out.size(), last && !odd,
        [&](std::size_t i) { return loadUnit<Order>(in.data() + 2 * i); },
        [&](std::size_t i, char16_t unit) { out[i] = unit; });
    result.consumed *= 2;
    result.badLength = static_cast<std::uint8_t>(result.badLength * 2);
    if (!odd) return result;
    if (result.stop == CodecStop::Truncated && last) {
      result.stop = CodecStop::Invalid;
      result.badLength = 2;
    } else if (result.stop == CodecStop::InputEnd) {
      result.stop = last ? CodecStop::Invalid : CodecStop::Truncated;
      result.badLength = last ? 1 : 0;
    }
    return result;
  }
};

template <std::endian Order>
class Utf16Encoder final : public Encoder {
 public:
  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    CodecResult result = copyUtf16(
        in.size(), out.size() / 2, last, [&](std::size_t i) { return in[i]; },
        [&](std::size_t i, char16_t unit) { storeUnit<Order>(out.data() + 2 * i, unit); });
    result.produced *= 2;
    return result;
  }
};

template <std::endian Order>
class Utf32Decoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    std::size_t i = 0;
    std::size_t o = 0;
    for (; in.size() - i >= 4; i += 4) {
      const std::uint32_t character = loadWord<Order>(in.data() + i);
      if (character > 0x10FFFF || (character < 0x10000 && isSurrogate(character)))
        return stopAt(i, o, CodecStop::Invalid, 4);
      if (out.size() - o < (character < 0x10000 ? 1u : 2u))
        return stopAt(i, o, CodecStop::OutputFull);
      if (character < 0x10000) {
        out[o++] = static_cast<char16_t>(character);
      } else {
        out[o++] = static_cast<char16_t>(0xD7C0 + (character >> 10));
        out[o++] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
      }
    }
    if (i == in.size()) return stopAt(i, o, CodecStop::InputEnd);
    return last ? stopAt(i, o, CodecStop::Invalid, in.size() - i)
                : stopAt(i, o, CodecStop::Truncated);
  }
};

template <std::endian Order>
class Utf32Encoder final : public Encoder {
 public:
  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    std::size_t o = 0;
    for (std::size_t i = 0; i < in.size();) {
      std::uint32_t character = in[i];
      std::size_t length = 1;
      if (isSurrogate(character)) {
        if (!isHigh(character)) return stopAt(i, o, CodecStop::Invalid, 1);
        if (i + 1 == in.size())
          return last ? stopAt(i, o, CodecStop::Invalid, 1) : stopAt(i, o, CodecStop::Truncated);
        if (!isLow(in[i + 1])) return stopAt(i, o, CodecStop::Invalid, 1);
        character = 0x10000 + ((character - 0xD800) << 10) + (in[i + 1] - 0xDC00u);
        length = 2;
      }
      if (out.size() - o < 4) return stopAt(i, o, CodecStop::OutputFull);
      storeWord<Order>(out.data() + o, character);
      o += 4;
      i += length;
    }
    return stopAt(in.size(), o, CodecStop::InputEnd);
  }
};

}  // namespace

DecoderPtr makeUtf8Decoder() {
  return std::make_unique<Utf8Decoder>();
}
EncoderPtr makeUtf8Encoder() {
  return std::make_unique<Utf8Encoder>();
}
DecoderPtr makeUtf16LeDecoder() {
  return std::make_unique<Utf16Decoder<std::endian::little>>();
}
EncoderPtr makeUtf16LeEncoder() {
  return std::make_unique<Utf16Encoder<std::endian::little>>();
}
DecoderPtr makeUtf16BeDecoder() {
  return std::make_unique<Utf16Decoder<std::endian::big>>();
}
EncoderPtr makeUtf16BeEncoder() {
  return std::make_unique<Utf16Encoder<std::endian::big>>();
}
DecoderPtr makeUtf32LeDecoder() {
  return std::make_unique<Utf32Decoder<std::endian::little>>();
}
EncoderPtr makeUtf32LeEncoder() {
  return std::make_unique<Utf32Encoder<std::endian::little>>();
}
DecoderPtr makeUtf32BeDecoder() {
  return std::make_unique<Utf32Decoder<std::endian::big>>();
}
EncoderPtr makeUtf32BeEncoder() {
  return std::make_unique<Utf32Encoder<std::endian::big>>();
}

}  // namespace zantrel

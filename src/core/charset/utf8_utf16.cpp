// UTF-8 and UTF-16, portable path and the choice of path.
//
// Standard: The Unicode Standard 15.0, section 3.9 (D91, D92, table 3-7) and the recommendation on
// "U+FFFD Substitution of Maximal Subparts" there. The portable loops take ASCII eight
// bytes or four units at a time and everything else one character at a time. The vector kernels
// convert whole blocks that are valid and leave the ends and every doubtful block to the portable
// loops, so that there is one place only which decides what an error is and how long it is.

#include "core/charset/utf8_utf16.h"

#include <array>
#include <bit>
#include <cstring>

#include "core/charset/utf8_utf16_kernels.h"
#include "platform/cpu_features.h"

namespace zantrel {
namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080u;
constexpr std::uint64_t kNonAsciiUnits = 0xFF80FF80FF80FF80u;

/// Second bytes that a lead byte allows, and how many continuation bytes it needs (0: not a lead).
struct Lead {
  std::uint8_t continuations;
  std::uint8_t lowest;
  std::uint8_t highest;
};

constexpr Lead leadOf(std::uint8_t byte) noexcept {
  if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
  if (byte < 0xE0) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte < 0xF0) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  return {3, 0x80, 0xBF};
}

/// How many of eight bytes in memory stand before the first that has one of the bits `unwanted`.
std::size_t bytesInFrontOf(std::uint64_t unwanted, const void* from) noexcept {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  constexpr bool kLittle = std::endian::native == std::endian::little;
  const int bits = kLittle ? std::countr_zero(word & unwanted) : std::countl_zero(word & unwanted);
  return static_cast<std::size_t>(bits) / 8;
}

CodecResult stopAt(std::size_t consumed, std::size_t produced, CodecStop stop,
                   std::size_t badLength = 0) noexcept {
  return {consumed, produced, stop, static_cast<std::uint8_t>(badLength)};
}

/// Continues with the portable loop behind what a vector kernel has done.
template <class In, class Out, class Loop>
CodecResult after(KernelProgress done, std::span<const In> in, bool last, std::span<Out> out,
                  Loop loop) noexcept {
  CodecResult rest = loop(in.subspan(done.consumed), last, out.subspan(done.produced));
  rest.consumed += done.consumed;
  rest.produced += done.produced;
  return rest;
}

}  // namespace

namespace utf_portable {

CodecResult utf8ToUtf16(ByteSpan in, bool last, std::span<char16_t> out) noexcept {
  const std::uint8_t* const bytes = in.data();
  const std::size_t size = in.size();
  char16_t* const units = out.data();
  const std::size_t room = out.size();
  std::size_t i = 0;
  std::size_t o = 0;
  while (i < size) {
    const std::uint8_t first = bytes[i];
    if (first < 0x80) {
      std::size_t run = 8;
      while (run == 8 && size - i >= 8 && room - o >= 8) {
        run = bytesInFrontOf(kHighBits, bytes + i);
        for (std::size_t k = 0; k < 8; ++k) units[o + k] = bytes[i + k];
        i += run;
        o += run;
      }
      if (i == size || bytes[i] >= 0x80) continue;
      if (o == room) return stopAt(i, o, CodecStop::OutputFull);
      units[o++] = bytes[i++];
      continue;
    }
    if (size - i >= 3 && o < room) {  // what most texts hold, short of the ends
      const std::uint32_t second = bytes[i + 1] ^ 0x80u;
      const std::uint32_t third = bytes[i + 2] ^ 0x80u;
      if (first >= 0xC2 && first < 0xE0 && second < 0x40) {
        units[o++] = static_cast<char16_t>((first & 0x1Fu) << 6 | second);
        i += 2;
        continue;
      }
      const std::uint32_t unit = (first & 0xFu) << 12 | second << 6 | third;
      if ((first & 0xF0) == 0xE0 && (second | third) < 0x40 && unit >= 0x800 &&
          (unit & 0xF800) != 0xD800) {
        units[o++] = static_cast<char16_t>(unit);
        i += 3;
        continue;
      }
    }
    const Lead lead = leadOf(first);
    if (lead.continuations == 0) return stopAt(i, o, CodecStop::Invalid, 1);
    std::uint32_t character = first & (0x3Fu >> lead.continuations);
    for (std::size_t k = 1; k <= lead.continuations; ++k) {
      if (i + k == size)
        return last ? stopAt(i, o, CodecStop::Invalid, k) : stopAt(i, o, CodecStop::Truncated);
      const std::uint8_t byte = bytes[i + k];
      const std::uint8_t lowest = k == 1 ? lead.lowest : 0x80;
      const std::uint8_t highest = k == 1 ? lead.highest : 0xBF;
      if (byte < lowest || byte > highest) return stopAt(i, o, CodecStop::Invalid, k);
      character = (character << 6) | (byte & 0x3Fu);
    }
    if (character < 0x10000) {
      if (o == room) return stopAt(i, o, CodecStop::OutputFull);
      units[o++] = static_cast<char16_t>(character);
    } else {
      if (room - o < 2) return stopAt(i, o, CodecStop::OutputFull);
      units[o++] = static_cast<char16_t>(0xD7C0 + (character >> 10));
      units[o++] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
    i += 1u + lead.continuations;
  }
  return stopAt(i, o, CodecStop::InputEnd);
}

CodecResult utf16ToUtf8(std::span<const char16_t> in, bool last,
                        std::span<std::uint8_t> out) noexcept {
  const char16_t* const units = in.data();
  const std::size_t size = in.size();
  std::uint8_t* const bytes = out.data();
  const std::size_t room = out.size();
  std::size_t i = 0;
  std::size_t o = 0;
  while (i < size) {
    const std::uint32_t unit = units[i];
    if (unit < 0x80) {
      while (size - i >= 4 && room - o >= 4 && bytesInFrontOf(kNonAsciiUnits, units + i) == 8) {
        for (std::size_t k = 0; k < 4; ++k) bytes[o + k] = static_cast<std::uint8_t>(units[i + k]);
        i += 4;
        o += 4;
      }
      if (i == size) break;
      if (units[i] < 0x80) {
        if (o == room) return stopAt(i, o, CodecStop::OutputFull);
        bytes[o++] = static_cast<std::uint8_t>(units[i++]);
      }
      continue;
    }
    if (unit < 0x800) {
      if (room - o < 2) return stopAt(i, o, CodecStop::OutputFull);
      bytes[o] = static_cast<std::uint8_t>(0xC0 | (unit >> 6));
      bytes[o + 1] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
      o += 2;
      ++i;
      continue;
    }
    if ((unit & 0xF800) != 0xD800) {
      if (room - o < 3) return stopAt(i, o, CodecStop::OutputFull);
      bytes[o] = static_cast<std::uint8_t>(0xE0 | (unit >> 12));
      bytes[o + 1] = static_cast<std::uint8_t>(0x80 | ((unit >> 6) & 0x3F));
      bytes[o + 2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
      o += 3;
      ++i;
      continue;
    }
    if (unit >= 0xDC00) return stopAt(i, o, CodecStop::Invalid, 1);
    if (i + 1 == size)
      return last ? stopAt(i, o, CodecStop::Invalid, 1) : stopAt(i, o, CodecStop::Truncated);
    const std::uint32_t low = units[i + 1];
    if ((low & 0xFC00) != 0xDC00) return stopAt(i, o, CodecStop::Invalid, 1);
    if (room - o < 4) return stopAt(i, o, CodecStop::OutputFull);
    const std::uint32_t character = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    bytes[o] = static_cast<std::uint8_t>(0xF0 | (character >> 18));
    bytes[o + 1] = static_cast<std::uint8_t>(0x80 | ((character >> 12) & 0x3F));
    bytes[o + 2] = static_cast<std::uint8_t>(0x80 | ((character >> 6) & 0x3F));
    bytes[o + 3] = static_cast<std::uint8_t>(0x80 | (character & 0x3F));
    o += 4;
    i += 2;
  }
  return stopAt(i, o, CodecStop::InputEnd);
}

}  // namespace utf_portable

CodecResult utf8ToUtf16(ByteSpan in, bool last, std::span<char16_t> out) noexcept {
  KernelProgress done;
#ifdef ZT_X86_64
  if (cpuFeatures().avx512) {
    done = utf8ToUtf16Avx512(in, out);
  } else if (cpuFeatures().avx2) {
    done = utf8ToUtf16Avx2(in, out);
  }
#endif
  return after(done, in, last, out, utf_portable::utf8ToUtf16);
}

CodecResult utf16ToUtf8(std::span<const char16_t> in, bool last,
                        std::span<std::uint8_t> out) noexcept {
  KernelProgress done;
#ifdef ZT_X86_64
  if (cpuFeatures().avx512) {
    done = utf16ToUtf8Avx512(in, out);
  } else if (cpuFeatures().avx2) {
    done = utf16ToUtf8Avx2(in, out);
  }
#endif
  return after(done, in, last, out, utf_portable::utf16ToUtf8);
}

std::size_t validUtf8Size(ByteSpan text) noexcept {
  std::array<char16_t, 4096> units;
  for (std::size_t at = 0; at < text.size();) {
    const CodecResult result = utf8ToUtf16(text.subspan(at), true, units);
    at += result.consumed;
    if (result.stop == CodecStop::Invalid) return at;
  }
  return text.size();
}

std::size_t swapUnits(ByteSpan in, std::uint8_t* out) noexcept {
  const std::size_t size = in.size() & ~std::size_t{1};
  std::size_t i = 0;
#ifdef ZT_X86_64
  if (cpuFeatures().avx2) i = swapUnitsAvx2(in.first(size), out);
#endif
  for (; i < size; i += 2) {
    const std::uint8_t first = in[i];
    out[i] = in[i + 1];
    out[i + 1] = first;
  }
  return size;
}

}  // namespace zantrel

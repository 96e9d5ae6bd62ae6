// Base64, RFC 4648 section 4; line breaks as RFC 2045 section 6.8 has them, at 72 characters unless
// the caller says otherwise.
//
// Portable method: encoding looks up two characters at a time in a table of 4096 pairs and takes
// six bytes a step. Decoding ORs four table words to three bytes; the words of characters that are
// to be skipped or that end the text carry a flag, so clean runs cost one test per eight characters
// and everything else goes through the character-by-character rule. Vector paths (base64_x86.cpp)
// take the bulk where the processor has them; all paths give the same bytes for every input.

#include "core/encode/base64.h"

#include <array>
#include <cstring>

#include "core/byte_order.h"
#include "core/data_buffer.h"
#include "core/encode/base64_kernels.h"
#include "core/encode/buffer_fill.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

using base64::DecodeProgress;
using base64::kAlphabet;
using base64::kSkip;
using base64::kStop;

struct CharPair {
  char c[2];
};

constexpr auto kPairs = [] {
  std::array<CharPair, 4096> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i) pairs[i] = {{kAlphabet[i >> 6], kAlphabet[i & 63]}};
  return pairs;
}();

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  for (unsigned c = 0; c < values.size(); ++c) values[c] = base64::decodedValue(c);
  return values;
}();

constexpr std::uint32_t kUnclean = 0x0100'0000;

// kWords[k][c]: the bits that character c contributes as the k-th of its group; the first output
// byte in the lowest eight bits.
constexpr auto kWords = [] {
  std::array<std::array<std::uint32_t, 256>, 4> words{};
  for (unsigned c = 0; c < 256; ++c) {
    const std::uint32_t v = kValues[c];
    if (v > 63) {
      for (auto& row : words) row[c] = kUnclean;
      continue;
    }
    words[0][c] = v << 2;
    words[1][c] = (v >> 4) | ((v & 15) << 12);
    words[2][c] = ((v >> 2) << 8) | ((v & 3) << 22);
    words[3][c] = v << 16;
  }
  return words;
}();

std::size_t encodePortable(const std::uint8_t* in, std::size_t size, char* out) noexcept {
  const char* const start = out;
  std::size_t i = 0;
  for (; i + 8 <= size; i += 6, out += 8) {
    const auto bits = loadWord<std::uint64_t, std::endian::big>(in + i);
    const auto pair = [bits](int shift) {
      return kPairs[static_cast<std::size_t>(bits >> shift & 4095)].c;
    };
    std::memcpy(out, pair(52), 2);
    std::memcpy(out + 2, pair(40), 2);
    std::memcpy(out + 4, pair(28), 2);
    std::memcpy(out + 6, pair(16), 2);
  }
  for (; i + 3 <= size; i += 3, out += 4) {
    const std::uint32_t bits =
        std::uint32_t{in[i]} << 16 | std::uint32_t{in[i + 1]} << 8 | in[i + 2];
    std::memcpy(out, kPairs[bits >> 12].c, 2);
    std::memcpy(out + 2, kPairs[bits & 4095].c, 2);
  }
  if (i + 1 == size) {
    std::memcpy(out, kPairs[std::uint32_t{in[i]} << 4].c, 2);
    out[2] = out[3] = '=';
    out += 4;
  } else if (i + 2 == size) {
    std::memcpy(out, kPairs[std::uint32_t{in[i]} << 4 | in[i + 1] >> 4].c, 2);
    out[2] = kAlphabet[(in[i + 1] & 15) << 2];
    out[3] = '=';
    out += 4;
  }
  return static_cast<std::size_t>(out - start);
}

// The bits of a group whose characters are the lowest four bytes of `text`, in memory order.
std::uint32_t groupBits(std::uint64_t text) noexcept {
  return kWords[0][text & 0xFF] | kWords[1][text >> 8 & 0xFF] | kWords[2][text >> 16 & 0xFF] |
         kWords[3][text >> 24 & 0xFF];
}

// Groups of four without anything to skip; stops in front of the first group that has.
DecodeProgress decodeGroupsPortable(const char* in, std::size_t size, std::uint8_t* out) noexcept {
  std::size_t i = 0;
  // Each step writes eight bytes of which six count; the group behind gives the others room.
  for (; size - i >= 12; i += 8, out += 6) {
    const auto text =
        loadWord<std::uint64_t, std::endian::little>(reinterpret_cast<const std::uint8_t*>(in) + i);
    const std::uint32_t first = groupBits(text);
    const std::uint32_t second = groupBits(text >> 32);
    if (((first | second) & kUnclean) != 0) break;
    storeWord<std::endian::little>(first | std::uint64_t{second} << 24, out);
  }
  for (; size - i >= 4; i += 4, out += 3) {
    const std::uint32_t bits = groupBits(loadWord<std::uint32_t, std::endian::little>(
        reinterpret_cast<const std::uint8_t*>(in) + i));
    if ((bits & kUnclean) != 0) break;
    out[0] = static_cast<std::uint8_t>(bits);
    out[1] = static_cast<std::uint8_t>(bits >> 8);
    out[2] = static_cast<std::uint8_t>(bits >> 16);
  }
  return {i, i / 4 * 3, false};
}

/// Values read so far of a group of four that is not complete yet.
struct PartialGroup {
  std::uint32_t bits = 0;
  unsigned count = 0;
};

// Character by character, up to the end of the next complete group, or to the next character that
// counts where a group starts behind some that do not.
DecodeProgress decodeOneGroup(const char* in, std::size_t size, PartialGroup& group,
                              std::uint8_t* out) noexcept {
  for (std::size_t i = 0; i < size; ++i) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(in[i])];
    if (value == kStop) return {i, 0, true};
    if (value == kSkip) continue;
    if (group.count == 0 && i > 0) return {i, 0, false};
    group.bits = group.bits << 6 | value;
    if (++group.count < 4) continue;
    out[0] = static_cast<std::uint8_t>(group.bits >> 16);
    out[1] = static_cast<std::uint8_t>(group.bits >> 8);
    out[2] = static_cast<std::uint8_t>(group.bits);
    group = {};
    return {i + 1, 3, false};
  }
  return {size, 0, false};
}

// The whole bytes of an incomplete group: two characters hold one, three hold two.
std::size_t finishGroup(const PartialGroup& group, std::uint8_t* out) noexcept {
  if (group.count == 2) {
    out[0] = static_cast<std::uint8_t>(group.bits >> 4);
    return 1;
  }
  if (group.count == 3) {
    out[0] = static_cast<std::uint8_t>(group.bits >> 10);
    out[1] = static_cast<std::uint8_t>(group.bits >> 2);
    return 2;
  }
  return 0;
}

// What the processor at hand runs; null where the portable code does all.
struct Paths {
  std::size_t (*encode)(const std::uint8_t* in, std::size_t size, char* out) noexcept = nullptr;
  std::size_t (*encodeLines)(const std::uint8_t* in, std::size_t size, std::size_t lineBytes,
                             char* out) noexcept = nullptr;
  DecodeProgress (*decodeGroups)(const char* in, std::size_t size,
                                 std::uint8_t* out) noexcept = nullptr;
  std::size_t (*decodeAll)(const char* in, std::size_t size, std::uint8_t* out) noexcept = nullptr;
};

Paths choosePaths() noexcept {
  Paths paths;
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) {
    paths.encode = base64::encodeAvx512;
    paths.encodeLines = base64::encodeLinesAvx512;
    paths.decodeAll = base64::decodeAvx512;
  } else if (cpu.avx2) {
    paths.encode = base64::encodeAvx2;
    paths.encodeLines = base64::encodeLinesAvx2;
    paths.decodeGroups = base64::decodeGroupsAvx2;
  }
#endif
  return paths;
}

std::size_t encodeWith(const Paths& paths, ByteSpan in, char* out) noexcept {
  const std::size_t bulk = paths.encode == nullptr ? 0 : paths.encode(in.data(), in.size(), out);
  const std::size_t written = bulk / 3 * 4;
  return written + encodePortable(in.data() + bulk, in.size() - bulk, out + written);
}

std::size_t groupsPerLine(int maxLineLength) noexcept {
  return maxLineLength < 4 ? 1 : (static_cast<std::size_t>(maxLineLength) + 3) / 4;
}

}  // namespace

std::size_t base64EncodedSize(std::size_t bytes) noexcept {
  return clampSize((std::uint64_t{bytes} + 2) / 3 * 4);
}

std::size_t base64Encode(ByteSpan in, char* out) noexcept {
  return encodeWith(choosePaths(), in, out);
}

std::size_t base64LinesSize(std::size_t bytes, int maxLineLength) noexcept {
  const std::uint64_t groups = (std::uint64_t{bytes} + 2) / 3;
  return clampSize(groups * 4 + groups / groupsPerLine(maxLineLength) * 2);
}

std::size_t base64EncodeLines(ByteSpan in, int maxLineLength, char* out) noexcept {
  const Paths paths = choosePaths();
  const std::size_t lineGroups = groupsPerLine(maxLineLength);
  const char* const start = out;
  if (paths.encodeLines != nullptr) {
    const std::size_t bulk = paths.encodeLines(in.data(), in.size(), lineGroups * 3, out);
    out += bulk / 3 * 4 + bulk / (lineGroups * 3) * 2;
    in = in.subspan(bulk);
  }
  while (!in.empty()) {
    const ByteSpan line = in.first(in.size() < lineGroups * 3 ? in.size() : lineGroups * 3);
    in = in.subspan(line.size());
    const std::size_t written = encodeWith(paths, line, out);
    out += written;
    if (written < lineGroups * 4) break;
    *out++ = '\r';
    *out++ = '\n';
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t base64DecodedMaxSize(std::size_t characters) noexcept {
  return characters / 4 * 3 + 3;
}

std::size_t base64Decode(std::string_view in, std::uint8_t* out) noexcept {
  const Paths paths = choosePaths();
  if (paths.decodeAll != nullptr) return paths.decodeAll(in.data(), in.size(), out);
  const std::uint8_t* const start = out;
  PartialGroup group;
  const char* p = in.data();
  std::size_t left = in.size();
  const auto advance = [&](const DecodeProgress& step) {
    p += step.consumed;
    left -= step.consumed;
    out += step.produced;
    return !step.stopped;
  };
  while (left > 0) {
    if (group.count == 0) {
      if (paths.decodeGroups != nullptr) advance(paths.decodeGroups(p, left, out));
      advance(decodeGroupsPortable(p, left, out));
    }
    if (!advance(decodeOneGroup(p, left, group, out))) break;
  }
  out += finishGroup(group, out);
  return static_cast<std::size_t>(out - start);
}

bool base64Encode(ByteSpan in, StringBuffer& out) {
  return appendFilled(out, base64EncodedSize(in.size()),
                      [in](char* room) { return base64Encode(in, room); });
}

bool base64EncodeLines(ByteSpan in, int maxLineLength, StringBuffer& out) {
  return appendFilled(out, base64LinesSize(in.size(), maxLineLength),
                      [&](char* room) { return base64EncodeLines(in, maxLineLength, room); });
}

bool base64Decode(std::string_view in, DataBuffer& out) {
  if (in.empty()) return true;
  return appendFilled(out, base64DecodedMaxSize(in.size()),
                      [in](std::uint8_t* room) { return base64Decode(in, room); });
}

}  // namespace zantrel

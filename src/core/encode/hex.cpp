// Hexadecimal text. Portable method: a table of 256 digit pairs to write, one of 256 digit values
// to read. Vector paths (hex_x86.cpp) take the bulk where the processor has them.

#include "core/encode/hex.h"

#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/encode/hex_kernels.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

struct DigitPair {
  char c[2];
};

constexpr auto kDigitPairs = [] {
  std::array<DigitPair, 256> pairs{};
  for (unsigned i = 0; i < 256; ++i) pairs[i] = {{kHexDigits[i >> 4], kHexDigits[i & 15]}};
  return pairs;
}();

// Values of the two digits, shifted to their place; added modulo 256.
constexpr auto kDigitValues = [] {
  std::array<std::array<std::uint8_t, 256>, 2> values{};
  for (unsigned c = 0; c < 256; ++c) {
    values[0][c] = unvalidatedHexPair(static_cast<char>(c), '0');
    values[1][c] = unvalidatedHexPair('0', static_cast<char>(c));
  }
  return values;
}();

void encodePortable(const std::uint8_t* in, std::size_t size, char* out) noexcept {
  for (std::size_t i = 0; i < size; ++i) std::memcpy(out + 2 * i, kDigitPairs[in[i]].c, 2);
}

void decodePortable(const char* in, std::size_t pairs, std::uint8_t* out) noexcept {
  for (std::size_t i = 0; i < pairs; ++i) {
    const unsigned high = kDigitValues[0][static_cast<unsigned char>(in[2 * i])];
    const unsigned low = kDigitValues[1][static_cast<unsigned char>(in[2 * i + 1])];
    out[i] = static_cast<std::uint8_t>(high + low);
  }
}

std::size_t encodeBulk(ByteSpan in, char* out) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) return hex::encodeAvx512(in.data(), in.size(), out);
  if (cpu.avx2) return hex::encodeAvx2(in.data(), in.size(), out);
#endif
  (void)in, (void)out;
  return 0;
}

std::size_t decodeBulk(const char* in, std::size_t pairs, std::uint8_t* out) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) return hex::decodeAvx512(in, pairs, out);
  if (cpu.avx2) return hex::decodeAvx2(in, pairs, out);
#endif
  (void)in, (void)pairs, (void)out;
  return 0;
}

}  // namespace

std::size_t hexEncode(ByteSpan in, char* out) noexcept {
  const std::size_t bulk = encodeBulk(in, out);
  encodePortable(in.data() + bulk, in.size() - bulk, out + 2 * bulk);
  return in.size() * 2;
}

std::size_t hexDecode(std::string_view in, std::uint8_t* out) noexcept {
  const std::size_t pairs = in.size() / 2;
  const std::size_t bulk = decodeBulk(in.data(), pairs, out);
  decodePortable(in.data() + 2 * bulk, pairs - bulk, out + bulk);
  return pairs;
}

bool hexEncode(ByteSpan in, StringBuffer& out) {
  return appendFilled(out, clampSize(std::uint64_t{in.size()} * 2),
                      [in](char* room) { return hexEncode(in, room); });
}

bool hexDecode(std::string_view in, DataBuffer& out) {
  return appendFilled(out, in.size() / 2, [in](std::uint8_t* room) { return hexDecode(in, room); });
}

}  // namespace zantrel

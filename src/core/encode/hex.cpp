// Hexadecimal text. Portable method: a table of 256 digit pairs to write, one of 256 digit values
// to read.

#include "core/encode/hex.h"

#include <array>
#include <cstring>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
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

}  // namespace

std::size_t hexEncode(ByteSpan in, char* out) noexcept {
  encodePortable(in.data(), in.size(), out);
  return in.size() * 2;
}

std::size_t hexDecode(std::string_view in, std::uint8_t* out) noexcept {
  decodePortable(in.data(), in.size() / 2, out);
  return in.size() / 2;
}

bool hexEncode(ByteSpan in, StringBuffer& out) {
  return appendFilled(out, clampSize(std::uint64_t{in.size()} * 2),
                      [in](char* room) { return hexEncode(in, room); });
}

bool hexDecode(std::string_view in, DataBuffer& out) {
  return appendFilled(out, in.size() / 2, [in](std::uint8_t* room) { return hexDecode(in, room); });
}

}  // namespace zantrel

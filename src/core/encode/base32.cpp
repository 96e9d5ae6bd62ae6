// Base32, RFC 4648 section 6: five bytes are eight characters. Used for short keys and tokens, so a
// plain loop over groups suffices.

#include "core/encode/base32.h"

#include <algorithm>
#include <array>

#include "core/data_buffer.h"
#include "core/encode/buffer_fill.h"
#include "core/string_buffer.h"

namespace zantrel {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
constexpr std::uint8_t kSkip = 32;
constexpr std::uint8_t kStop = 33;

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kSkip);
  for (unsigned value = 0; value < 32; ++value) {
    const auto c = static_cast<unsigned char>(kAlphabet[value]);
    values[c] = static_cast<std::uint8_t>(value);
    if (c >= 'A') values[c | 0x20U] = static_cast<std::uint8_t>(value);
  }
  values['='] = values[0] = kStop;
  return values;
}();

}  // namespace

std::size_t base32EncodedSize(std::size_t bytes) noexcept {
  return clampSize((std::uint64_t{bytes} + 4) / 5 * 8);
}

std::size_t base32Encode(ByteSpan in, char* out) noexcept {
  const char* const start = out;
  while (!in.empty()) {
    const std::size_t count = std::min<std::size_t>(in.size(), 5);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < 5; ++i) bits = bits << 8 | (i < count ? in[i] : 0U);
    const std::size_t digits = (count * 8 + 4) / 5;
    for (std::size_t i = 0; i < 8; ++i)
      *out++ = i < digits ? kAlphabet[bits >> (35 - 5 * i) & 31] : '=';
    in = in.subspan(count);
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t base32DecodedMaxSize(std::size_t characters) noexcept {
  return characters / 8 * 5 + 5;
}

std::size_t base32Decode(std::string_view in, std::uint8_t* out) noexcept {
  const std::uint8_t* const start = out;
  std::uint32_t bits = 0;
  unsigned bitCount = 0;
  for (const char c : in) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
    if (value == kStop) break;
    if (value == kSkip) continue;
    bits = bits << 5 | value;
    bitCount += 5;
    if (bitCount < 8) continue;
    bitCount -= 8;
    *out++ = static_cast<std::uint8_t>(bits >> bitCount);
  }
  return static_cast<std::size_t>(out - start);
}

bool base32Encode(ByteSpan in, StringBuffer& out) {
  return appendFilled(out, base32EncodedSize(in.size()),
                      [in](char* room) { return base32Encode(in, room); });
}

bool base32Decode(std::string_view in, DataBuffer& out) {
  if (in.empty()) return true;
  return appendFilled(out, base32DecodedMaxSize(in.size()),
                      [in](std::uint8_t* room) { return base32Decode(in, room); });
}

}  // namespace zantrel

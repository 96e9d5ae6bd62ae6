#pragma once
// The vector paths of base64, chosen in base64.cpp only. Each handles the bulk of its input and
// leaves the rest to the portable code.

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"

namespace zantrel::base64 {

inline constexpr char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// What the decoder takes a character for: its value, or one of the two classes above 63.
inline constexpr std::uint8_t kSkip = 64;
inline constexpr std::uint8_t kStop = 65;

constexpr std::uint8_t decodedValue(unsigned c) noexcept {
  if (c == '=' || c == 0) return kStop;
  if (c < '+' || c > 'z') return kSkip;
  for (unsigned value = 0; value < 64; ++value)
    if (static_cast<unsigned char>(kAlphabet[value]) == c) return static_cast<std::uint8_t>(value);
  if (c == '-') return 62;
  if (c == '_') return 63;
  return 0;  // deliberate: other characters inside the range count as "A"
}

/// Values read so far of a group of four that is not complete yet.
struct PartialGroup {
  std::uint32_t bits = 0;
  unsigned count = 0;
};

struct DecodeProgress {
  std::size_t consumed = 0;
  std::size_t produced = 0;
  bool stopped = false;  ///< "=" or a zero byte was met
};

}  // namespace zantrel::base64

#pragma once
// The vector paths of base64, chosen in base64.cpp only. Each handles the bulk of its input and
// leaves the rest to the portable code.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

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

struct DecodeProgress {
  std::size_t consumed = 0;
  std::size_t produced = 0;
  bool stopped = false;  ///< "=" or a zero byte was met
};

#if defined(ZT_X86_64)
/// Encode the bulk of the whole groups of three and return how many bytes of input they took.
std::size_t encodeAvx2(const std::uint8_t* in, std::size_t size, char* out) noexcept;
std::size_t encodeAvx512(const std::uint8_t* in, std::size_t size, char* out) noexcept;

/// Encode the bulk of the lines of `lineBytes` bytes, each with its CRLF, and return how many bytes
/// of input they took: a multiple of `lineBytes`, itself a multiple of three.
std::size_t encodeLinesAvx2(const std::uint8_t* in, std::size_t size, std::size_t lineBytes,
                            char* out) noexcept;
std::size_t encodeLinesAvx512(const std::uint8_t* in, std::size_t size, std::size_t lineBytes,
                              char* out) noexcept;

/// Decodes groups of four, with a CRLF between any two, up to the first that holds anything but
/// digits of the alphabet, or to the last ones of the text.
DecodeProgress decodeGroupsAvx2(const char* in, std::size_t size, std::uint8_t* out) noexcept;
/// Decodes the whole text by the whole rule and returns the bytes written.
std::size_t decodeAvx512(const char* in, std::size_t size, std::uint8_t* out) noexcept;
#endif

}  // namespace zantrel::base64

#pragma once
// Runs of ASCII inside other charsets. The loops have a fixed length, so that compilers turn each
// into a few vector instructions of the baseline.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zantrel {

inline constexpr std::size_t kAsciiStep = 32;

/// Widens the ASCII bytes at the start of `in`; how many there were.
inline std::size_t widenAscii(const std::uint8_t* in, std::size_t count, char16_t* out) noexcept {
  std::size_t i = 0;
  for (; i + kAsciiStep <= count; i += kAsciiStep) {
    std::uint64_t words[kAsciiStep / 8];
    std::memcpy(words, in + i, kAsciiStep);
    if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080u) != 0) break;
    for (std::size_t k = 0; k < kAsciiStep; ++k) out[i + k] = in[i + k];
  }
  for (; i < count && in[i] < 0x80; ++i) out[i] = in[i];
  return i;
}

/// Narrows the ASCII units at the start of `in`; how many there were.
inline std::size_t narrowAscii(const char16_t* in, std::size_t count, std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; i + kAsciiStep <= count; i += kAsciiStep) {
    unsigned all = 0;
    for (std::size_t k = 0; k < kAsciiStep; ++k) all |= in[i + k];
    if (all >= 0x80) break;
    for (std::size_t k = 0; k < kAsciiStep; ++k) out[i + k] = static_cast<std::uint8_t>(in[i + k]);
  }
  for (; i < count && in[i] < 0x80; ++i) out[i] = static_cast<std::uint8_t>(in[i]);
  return i;
}

}  // namespace zantrel

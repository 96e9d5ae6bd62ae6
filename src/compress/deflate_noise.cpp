#include "compress/deflate_noise.h"

#include "compress/deflate_format.h"
#include "compress/deflate_matches.h"

namespace zantrel::zee {

namespace {

/// How far the counts of `size` bytes are from even ones: the sum of their squares, which for
/// random bytes is near size + size^2 / 256.
template <std::size_t Size>
std::uint32_t unevenness(const std::uint8_t* p) noexcept {
  std::array<std::uint16_t, 256> counts[2]{};
  for (std::size_t i = 0; i < Size; i += 2) {
    ++counts[0][p[i]];
    ++counts[1][p[i + 1]];
  }
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < 256; ++i) {
    const std::uint32_t n = std::uint32_t{counts[0][i]} + counts[1][i];
    sum += n * n;
  }
  return sum;
}

// An excess of x over what chance gives means that a code could spare x / (2 ln 2) * 256 / size
// bits, and chance strays by 22 * size / 256.
constexpr std::uint32_t limitOf(std::uint32_t size, std::uint32_t excess) {
  return size + (size * size + excess * size) / 256;
}

constexpr std::size_t kGlance = 256;   // tells text and tables at once
constexpr std::size_t kSample = 1024;  // a quarter of a piece is enough to be sure

// Every eighth place is remembered, every ninth looked up: a repetition of 75 bytes is found
// wherever it starts.
constexpr std::size_t kRemembered = 8, kLookedUp = 9;

}  // namespace

bool NoiseDetector::isNoise(const std::uint8_t* p, std::uint32_t position,
                            std::size_t history) noexcept {
  return unevenness<kGlance>(p) <= limitOf(kGlance, 150) &&
         unevenness<kSample>(p + kGlance) <= limitOf(kSample, 100) &&
         !repeats(p, position, history);
}

bool NoiseDetector::repeats(const std::uint8_t* p, std::uint32_t position,
                            std::size_t history) noexcept {
  // Places modulo 65,536; one too old is compared like any other and found different.
  constexpr std::size_t kGroup = kRemembered * kLookedUp;
  for (std::size_t i = 0; i + kGroup <= kPiece; i += kGroup) {
    for (std::size_t at = i; at < i + kGroup; at += kLookedUp) {
      const std::uint32_t value = load32(p + at);
      const std::size_t distance = (position + at - places_[hashOf(value, kHashBits)]) & 0xFFFF;
      if (distance - 1 < kMaxDistance && distance <= history + at &&
          load32(p + at - distance) == value)
        return true;
    }
    for (std::size_t at = i; at < i + kGroup; at += kRemembered)
      places_[hashOf(load32(p + at), kHashBits)] = static_cast<std::uint16_t>(position + at);
  }
  return false;
}

}  // namespace zantrel::zee

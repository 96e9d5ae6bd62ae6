#include "compress/deflate_block_split.h"

#include <array>
#include <bit>

namespace zantrel::zee {

namespace {

constexpr unsigned kFractionBits = 16;
constexpr unsigned kSteps = 256;

/// log2 of 1 + i / 256, in 1/65536.
constexpr std::array<std::uint32_t, kSteps + 1> kLogFraction = [] {
  std::array<std::uint32_t, kSteps + 1> table{};
  for (unsigned i = 0; i < kSteps; ++i) {
    // Squaring doubles the logarithm: whenever a number reaches 2 the next binary digit is 1.
    std::uint64_t x = std::uint64_t{kSteps + i} << 22;  // 30 binary places
    for (unsigned k = 0; k < kFractionBits; ++k) {
      x = (x * x) >> 30;
      table[i] = table[i] << 1 | static_cast<std::uint32_t>(x >> 31);
      if (x >> 31 != 0) x >>= 1;
    }
  }
  table[kSteps] = 1U << kFractionBits;
  return table;
}();
static_assert(kLogFraction[0] == 0 && kLogFraction[128] == 38336);  // log2(1.5) = 0.58496

/// Between the steps of the table on a straight line.
std::uint32_t log2(std::uint32_t n) noexcept {
  const unsigned whole = static_cast<unsigned>(std::bit_width(n)) - 1;
  const std::uint32_t fraction = static_cast<std::uint32_t>((std::uint64_t{n} << 16) >> whole);
  const std::uint32_t step = (fraction >> 8) & 0xFF, rest = fraction & 0xFF;
  const std::uint32_t low = kLogFraction[step], high = kLogFraction[step + 1];
  return (whole << kFractionBits) + low + (((high - low) * rest) >> 8);
}

std::uint64_t idealBits(const Frequencies& f) noexcept {
  return zee::idealBits(f.literal.data(), f.literal.size()) +
         zee::idealBits(f.distance.data(), f.distance.size());
}

/// What a header with codes for these symbols takes, about.
std::uint64_t headerBits(const Frequencies& f) noexcept {
  std::uint64_t used = 0;
  for (const std::uint32_t n : f.literal) used += n != 0;
  for (const std::uint32_t n : f.distance) used += n != 0;
  return (80 + 4 * used) << kFractionBits;
}

}  // namespace

std::uint64_t idealBits(const std::uint32_t* frequencies, std::size_t count) noexcept {
  std::uint64_t total = 0, spared = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t n = frequencies[i];
    if (n == 0) continue;
    total += n;
    spared += std::uint64_t{n} * log2(n);
  }
  return total == 0 ? 0 : total * log2(static_cast<std::uint32_t>(total)) - spared;
}

bool worthSplitting(const Frequencies& block, const Frequencies& next) noexcept {
  Frequencies joined = block;
  joined.add(next);
  return idealBits(block) + idealBits(next) + headerBits(next) < idealBits(joined);
}

}  // namespace zantrel::zee

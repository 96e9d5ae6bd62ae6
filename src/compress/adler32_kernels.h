#pragma once
// The two sums of Adler-32 over bytes; adler32.cpp chooses among these and cares for the
// remainders.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::adler {

inline constexpr std::uint32_t kModulus = 65521;
/// The sums of this many bytes fit 32 bits, even if they start from the greatest 16 bits.
inline constexpr std::size_t kMostAtOnce = 5504;
static_assert(std::uint64_t{255} * kMostAtOnce * (kMostAtOnce + 1) / 2 +
                  65535 * (kMostAtOnce + 1) <=
              0xFFFFFFFF);

struct Sums {
  std::uint32_t bytes;  ///< the sum of the bytes
  std::uint32_t sums;   ///< the sum of the sums after each byte
};

// Add `count` bytes to the sums, at most kMostAtOnce; the vector forms take multiples of kStep.
void portable(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept;

#if defined(ZT_X86_64)
inline constexpr std::size_t kStep = 64;
void avx2(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept;
void avx512(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept;
#endif

}  // namespace zantrel::adler

// Sixteen bytes a step through as many tables: table k holds the effect of a byte that k more
// follow.

#include "compress/bzip2_crc.h"

#include <array>
#include <bit>
#include <cstddef>

#include "core/byte_order.h"

namespace zantrel {

namespace {

constexpr std::uint32_t kPolynomial = 0x04C11DB7;
constexpr std::size_t kStep = 16;

using Table = std::array<std::uint32_t, 256>;

constexpr std::array<Table, kStep> makeTables() {
  std::array<Table, kStep> tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte << 24;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ ((crc >> 31) != 0 ? kPolynomial : 0);
    tables[0][byte] = crc;
  }
  for (std::size_t k = 1; k < kStep; ++k)
    for (std::size_t byte = 0; byte < 256; ++byte)
      tables[k][byte] = tables[k - 1][byte] << 8 ^ tables[0][tables[k - 1][byte] >> 24];
  return tables;
}

constexpr std::array<Table, kStep> kTables = makeTables();

// The effect of eight bytes, the first the highest, that `behind` more follow.
std::uint32_t effect(std::uint64_t bytes, std::size_t behind) noexcept {
  std::uint32_t sum = 0;
  for (std::size_t k = 0; k < 8; ++k) sum ^= kTables[behind + k][bytes >> 8 * k & 255];
  return sum;
}

}  // namespace

void Bzip2Crc::update(ByteSpan bytes) noexcept {
  std::uint32_t crc = state_;
  const std::uint8_t* p = bytes.data();
  std::size_t left = bytes.size();
  const auto eight = [](const std::uint8_t* at) {
    return loadWord<std::uint64_t, std::endian::big>(at);
  };
  for (; left >= kStep; left -= kStep, p += kStep)
    crc = effect(eight(p) ^ std::uint64_t{crc} << 32, 8) ^ effect(eight(p + 8), 0);
  for (; left > 0; --left) crc = crc << 8 ^ kTables[0][*p++ ^ crc >> 24];
  state_ = crc;
}

}  // namespace zantrel

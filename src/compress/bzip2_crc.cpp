// Eight bytes a step through eight tables: table k holds the effect of a byte that k more follow.

#include "compress/bzip2_crc.h"

#include <array>
#include <cstddef>

namespace zantrel {

namespace {

constexpr std::uint32_t kPolynomial = 0x04C11DB7;
constexpr std::size_t kStep = 8;

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

}  // namespace

void Bzip2Crc::update(ByteSpan bytes) noexcept {
  std::uint32_t crc = state_;
  const std::uint8_t* p = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= kStep; left -= kStep, p += kStep)
    crc = kTables[7][p[0] ^ crc >> 24] ^ kTables[6][p[1] ^ (crc >> 16 & 255)] ^
          kTables[5][p[2] ^ (crc >> 8 & 255)] ^ kTables[4][p[3] ^ (crc & 255)] ^ kTables[3][p[4]] ^
          kTables[2][p[5]] ^ kTables[1][p[6]] ^ kTables[0][p[7]];
  for (; left > 0; --left) crc = crc << 8 ^ kTables[0][*p++ ^ crc >> 24];
  state_ = crc;
}

}  // namespace zantrel

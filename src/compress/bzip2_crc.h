#pragma once

#include <cstdint>

#include "core/bytes.h"

namespace zantrel {

/// CRC-32 as bzip2 runs it: the polynomial 0x04C11DB7, most significant bit first, so not the one
/// of zip and gzip.
class Bzip2Crc {
 public:
  void update(ByteSpan bytes) noexcept;
  std::uint32_t value() const noexcept { return ~state_; }

 private:
  std::uint32_t state_ = 0xFFFFFFFF;
};

/// The checksum of a stream after one more of its blocks.
constexpr std::uint32_t bzip2CombinedCrc(std::uint32_t stream, std::uint32_t block) noexcept {
  return (stream << 1 | stream >> 31) ^ block;
}

}  // namespace zantrel

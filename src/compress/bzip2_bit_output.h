#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/byte_order.h"
#include "core/bytes.h"

namespace zantrel {

/// Bits, the most significant of a byte first. Whole bytes can be taken away at any time.
class Bzip2BitOutput {
 public:
  void clear() noexcept { *this = {}; }
  /// The whole bytes so far.
  ByteSpan bytes() const noexcept { return {bytes_.data(), size_}; }
  void dropBytes() noexcept { size_ = 0; }

  /// Makes room for this many more bits: put() does not look.
  void reserve(std::size_t bits) {
    const std::size_t needed = size_ + bits / 8 + sizeof bits_ + 1;
    if (needed > bytes_.size()) bytes_.resize(needed);
  }
  /// The low `count` bits of a value that has no others; at most 56.
  void put(std::uint64_t value, unsigned count) noexcept {
    used_ += count;
    bits_ |= value << (64 - used_);
    storeWord<std::endian::big>(bits_, bytes_.data() + size_);
    size_ += used_ / 8;
    bits_ <<= used_ & ~7U;
    used_ %= 8;
  }
  /// Fills the last byte with zeros.
  void alignToByte() noexcept {
    if (used_ > 0) put(0, 8 - used_);
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t size_ = 0;
  std::uint64_t bits_ = 0;  // fewer than 8, from the highest
  unsigned used_ = 0;
};

}  // namespace zantrel

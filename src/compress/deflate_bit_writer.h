#pragma once
// Bits to bytes, lowest bit first (RFC 1951, section 3.1.1), in words of 64.

#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"
#include "core/bytes.h"

namespace zantrel::zee {

/// Writes to memory that has room for all that is added and for kSlack bytes behind it.
class BitWriter final {
 public:
  static constexpr std::size_t kSlack = 8;
  /// Bits that may be held before a flush.
  static constexpr unsigned kRoom = 63;

  /// Bits that fill no byte are carried from one piece of memory to the next.
  void attach(std::uint8_t* out) noexcept { out_ = out; }
  std::uint8_t* position() const noexcept { return out_; }
  unsigned heldBits() const noexcept { return count_; }

  /// The bits of `value` above `count` must be zero.
  void add(std::uint64_t value, unsigned count) noexcept {
    held_ |= value << count_;
    count_ += count;
  }
  void flush() noexcept {
    storeWord<std::endian::little>(held_, out_);
    out_ += count_ >> 3;
    held_ >>= count_ & ~7U;
    count_ &= 7;
  }
  void addFlushed(std::uint64_t value, unsigned count) noexcept {
    add(value, count);
    flush();
  }
  /// Fills the last byte with zero bits.
  void alignToByte() noexcept {
    count_ = (count_ + 7) & ~7U;
    flush();
  }

 private:
  std::uint64_t held_ = 0;
  unsigned count_ = 0;
  std::uint8_t* out_ = nullptr;
};

}  // namespace zantrel::zee

#pragma once

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"

namespace zantrel {

/// Bits, the most significant of a byte first, of input that arrives in pieces. What it holds is a
/// copy worth keeping in registers: tight loops work on a local one and write it back.
class Bzip2BitInput {
 public:
  static constexpr unsigned kMost = 56;  // bits that can be asked for at once

  void clear() noexcept { *this = {}; }
  /// The next piece, which must stay where it is until it is used up. Call it only then.
  void feed(ByteSpan in) noexcept {
    next_ = in.data();
    end_ = next_ + in.size();
  }

  /// False when there is not as much input yet; nothing is lost then.
  bool ensure(unsigned bits) noexcept {
    if (count_ >= bits) return true;
    if (end_ - next_ >= 8) {
      std::uint64_t word = 0;
      for (unsigned i = 0; i < 8; ++i) word = word << 8 | next_[i];
      bits_ |= word >> count_;
      next_ += (63 - count_) / 8;
      count_ |= kMost;
      return true;
    }
    for (; count_ <= kMost && next_ != end_; count_ += 8)
      bits_ |= std::uint64_t{*next_++} << (kMost - count_);
    return count_ >= bits;
  }
  /// 1 to 56 bits that ensure() promised.
  std::uint64_t peek(unsigned bits) const noexcept { return bits_ >> (64 - bits); }
  void drop(unsigned bits) noexcept {
    bits_ <<= bits;
    count_ -= bits;
  }
  std::uint64_t take(unsigned bits) noexcept {
    const std::uint64_t value = peek(bits);
    drop(bits);
    return value;
  }
  /// Drops what is left of a byte that was begun.
  void alignToByte() noexcept { drop(count_ % 8); }
  unsigned bitsHeld() const noexcept { return count_; }

 private:
  // The next bit is the highest. Below the counted bits may stand some of the bytes at next_
  // already; or-ing those in again changes nothing.
  std::uint64_t bits_ = 0;
  unsigned count_ = 0;
  const std::uint8_t* next_ = nullptr;
  const std::uint8_t* end_ = nullptr;
};

}  // namespace zantrel

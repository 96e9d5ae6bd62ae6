#pragma once
// The byte by which a buffer knows that it is alive. Reads and the closing write are volatile: an
// optimiser otherwise drops the write into an object whose life ends, and takes the read as known.

#include <cstdint>

#include "platform/fail_fast.h"

namespace zantrel {

template <std::uint8_t kAlive>
class GuardByte {
 public:
  GuardByte() noexcept = default;
  ~GuardByte() { *const_cast<volatile std::uint8_t*>(&value_) = 0; }
  // Two guards are always alike: copying or moving a buffer leaves both alone.
  GuardByte(const GuardByte&) noexcept {}
  GuardByte& operator=(const GuardByte&) noexcept { return *this; }

  /// Stops the process when the object is destroyed or was overwritten.
  void check() const noexcept {
    if (*const_cast<const volatile std::uint8_t*>(&value_) != kAlive) failFast();
  }

 private:
  std::uint8_t value_ = kAlive;
};

}  // namespace zantrel

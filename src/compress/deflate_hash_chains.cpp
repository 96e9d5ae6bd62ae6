#include "compress/deflate_hash_chains.h"

namespace zantrel::zee {

void HashChains::catchUp(const std::uint8_t* p, std::uint32_t position) noexcept {
  if (position - next_ > kMaxCatchUp) {
    forget(position - kMaxCatchUp);
  } else {
    sweep(next_);
  }
  const std::uint8_t* const from = p - (position - next_);
  Walk(*this, from, from, p, next_).skipMatch(from, p);
  sweep(position);
}

void HashChains::sweep(std::uint32_t position) noexcept {
  const auto here = static_cast<std::uint16_t>(position);
  for (std::size_t i = 0; i < std::size_t{1} << bits_; ++i) {
    const auto age = static_cast<std::uint16_t>(here - latestOf4_[i]);
    latestOf4_[i] = static_cast<std::uint16_t>(here - std::min<std::uint16_t>(age, kTooFar));
  }
  swept_ = position;
}

void HashChains::forget(std::uint32_t position) noexcept {
  const auto tooFar = static_cast<std::uint16_t>(position - kTooFar);
  std::fill_n(latestOf4_.begin(), std::size_t{1} << bits_, tooFar);
  next_ = swept_ = position;
}

}  // namespace zantrel::zee

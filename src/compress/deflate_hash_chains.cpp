#include "compress/deflate_hash_chains.h"

namespace zantrel::zee {

void HashChains::catchUp(const std::uint8_t* p, std::uint32_t position) noexcept {
  const std::uint32_t gap = position - next_;
  if (gap >= kMaxDistance) {
    forget(position - static_cast<std::uint32_t>(kMaxDistance));
  } else {
    sweep(next_);
  }
  const std::uint8_t* from = p - (position - next_);
  prepare(from);
  while (from < p) skip(from++);
  sweep(position);
}

void HashChains::sweep(std::uint32_t position) noexcept {
  const auto here = static_cast<std::uint16_t>(position);
  const auto limitAge = [here](auto begin, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const auto age = static_cast<std::uint16_t>(here - begin[i]);
      begin[i] = static_cast<std::uint16_t>(here - std::min<std::uint16_t>(age, kTooFar));
    }
  };
  limitAge(latestOf4_.data(), std::size_t{1} << bits_);
  limitAge(latestOf3_.data(), latestOf3_.size());
  swept_ = position;
}

void HashChains::forget(std::uint32_t position) noexcept {
  const auto tooFar = static_cast<std::uint16_t>(position - kTooFar);
  std::fill_n(latestOf4_.begin(), std::size_t{1} << bits_, tooFar);
  latestOf3_.fill(tooFar);
  next_ = swept_ = position;
}

}  // namespace zantrel::zee

#pragma once
// The two latest places with a hash of four bytes, for the fastest level. Places are stream
// positions modulo 65,536, as in deflate_hash_chains.h, but nothing is swept: what an entry too old
// seems to say is compared with the bytes like any other.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "compress/deflate_format.h"
#include "compress/deflate_hash_chains.h"
#include "compress/deflate_matches.h"

namespace zantrel::zee {

class HashPairs final {
 public:
  /// As in HashChains.
  void start(std::size_t size) noexcept {
    bits_ = std::clamp(static_cast<unsigned>(std::bit_width(size)), 8U, kMaxBits);
    next_ = 0;
    std::fill_n(pairs_.begin(), std::size_t{1} << bits_, kNowhere << 16 | kNowhere);
  }

  void startPiece(const std::uint8_t* p, std::uint32_t position) noexcept {
    if (position != next_) {
      const auto gap =
          static_cast<std::uint32_t>(std::min<std::size_t>(position - next_, kMaxDistance));
      next_ = position - gap;
      hash_ = hashOf(load32(p - gap), bits_);
      for (const std::uint8_t* at = p - gap; at < p; ++at) skip(at);
    }
    hash_ = hashOf(load32(p), bits_);
  }

  /// Puts a place into the index and answers a match there, or length 0.
  [[gnu::always_inline]] Match find(const std::uint8_t* p, unsigned limit) noexcept {
    const auto here = static_cast<std::uint16_t>(next_);
    const std::uint32_t pair = pairs_[hash_];
    skip(p);
    if (limit < 4) [[unlikely]]
      return {0, 0};
    const std::uint32_t first = load32(p);
    const unsigned near = (here - pair) & 0xFFFF, far = (here - (pair >> 16)) & 0xFFFF;
    Match best{0, 0};
    if (near - 1 < kMaxDistance && load32(p - near) == first) {
      best = {matchLength(p, p - near, 4, limit), near};
      if (best.length >= std::min(kNice, limit)) return best;
      if (far - 1 < kMaxDistance && load32(p - far) == first &&
          load32(p - far + best.length - 3) == load32(p + best.length - 3)) {
        const unsigned length = matchLength(p, p - far, 4, limit);
        if (length > best.length) best = {length, far};
      }
    } else if (far - 1 < kMaxDistance && load32(p - far) == first) {
      best = {matchLength(p, p - far, 4, limit), far};
    }
    return best;
  }

  /// Puts the places of a match into the index.
  [[gnu::always_inline]] void skipMatch(const std::uint8_t* p, unsigned count) noexcept {
    for (const std::uint8_t* const end = p + count; p < end; ++p) skip(p);
  }

 private:
  static constexpr unsigned kMaxBits = 15;
  static constexpr unsigned kNice = 32;
  // So far from the first 32,768 places that it is no distance, and harmless behind them.
  static constexpr std::uint32_t kNowhere = kMaxDistance - 1;

  [[gnu::always_inline]] void skip(const std::uint8_t* p) noexcept {
    pairs_[hash_] = pairs_[hash_] << 16 | (next_++ & 0xFFFF);
    hash_ = hashOf(load32(p + 1), bits_);
    __builtin_prefetch(&pairs_[hash_], 1);
  }

  unsigned bits_ = kMaxBits;
  std::uint32_t next_ = 0;
  std::uint32_t hash_ = 0;
  std::array<std::uint32_t, std::size_t{1} << kMaxBits> pairs_;
};

}  // namespace zantrel::zee

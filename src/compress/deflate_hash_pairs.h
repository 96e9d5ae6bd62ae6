#pragma once
// The two latest places with the same hash, for the fastest level. Places are stream positions
// modulo 32,768, and nothing is swept: what an entry too old seems to say is compared with the
// bytes like any other.

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
    shift_ = 32 - std::clamp(static_cast<unsigned>(std::bit_width(size)), 8U, kMaxBits);
    next_ = 0;
    std::fill_n(pairs_.begin(), std::size_t{1} << (32 - shift_), 0);
  }

  /// Goes over a piece: what it needs stays in registers meanwhile. Hashes are of so many bytes, 4
  /// or 5; it does no harm when walks differ in that. Wherever it goes, 32,768 bytes can be read
  /// behind it, whether they belong to the stream or not.
  template <unsigned Bytes>
  class Walk {
   public:
    /// `start` is where the stream, or what can be seen of it, begins; `p` is at `position`. What
    /// was left out since the last walk is made up for.
    Walk(HashPairs& index, const std::uint8_t* start, const std::uint8_t* p,
         std::uint32_t position) noexcept
        : pairs_(index.pairs_.data()),
          shift_(index.shift_),
          start_(start),
          bias_(position - lowBits(p)) {
      const std::size_t gap = std::min<std::size_t>(position - index.next_, kMaxDistance);
      for (const std::uint8_t* missing = p - gap; missing < p; ++missing) put(missing);
      hash_ = hashAt(p);
    }

    /// Puts a place into the index. False if no match was found there.
    [[gnu::always_inline]] bool find(const std::uint8_t* p, unsigned limit, Match& match) noexcept {
      const std::uint32_t here = lowBits(p) + bias_;
      const std::uint32_t pair = pairs_[hash_];
      pairs_[hash_] = pair << 16 | (here & 0xFFFF);
      hash_ = hashAt(p + 1);
      __builtin_prefetch(&pairs_[hash_], 1);

      const std::uint32_t first = load32(p);
      const std::uint32_t near = (here - pair) & kMask, far = (here - (pair >> 16)) & kMask;
      const bool nearFits = load32(p - near) == first, farFits = load32(p - far) == first;
      if (!(nearFits | farFits)) return false;  // one branch, since either is hard to foresee
      match.distance = nearFits ? near : far;
      if (!isDistance(match.distance, p) || limit < 4) [[unlikely]]
        return false;
      match.length = matchLength(p, p - match.distance, 4, limit);
      if ((nearFits & farFits) && match.length < std::min(kNice, limit) && isDistance(far, p) &&
          load32(p - far + match.length - 3) == load32(p + match.length - 3)) {
        const unsigned length = matchLength(p, p - far, 4, limit);
        if (length > match.length) match = {length, far};
      }
      return true;
    }

    /// Puts the places of a match behind its first into the index, but of what is behind kDense
    /// every other.
    [[gnu::always_inline]] void skipMatch(const std::uint8_t* p, unsigned length) noexcept {
      const std::uint8_t* const end = p + length;
      const std::uint8_t* const dense = p + std::min(length, kDense);
      for (++p; p < dense; ++p) put(p);
      for (; p < end; p += 2) put(p);
      hash_ = hashAt(end);
    }

   private:
    static std::uint32_t lowBits(const std::uint8_t* p) noexcept {
      return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(p));
    }
    bool isDistance(std::uint32_t distance, const std::uint8_t* p) const noexcept {
      return distance - 1U < static_cast<std::size_t>(p - start_);
    }
    std::uint32_t hashAt(const std::uint8_t* p) const noexcept {
      if constexpr (Bytes == 4) return hashOf(load32(p), 32 - shift_);
      // The bytes are shifted to the top, so that the others do not count.
      return static_cast<std::uint32_t>(((load64(p) << 24) * 0x9E3779B185EBCA87U) >> 32 >> shift_);
    }
    [[gnu::always_inline]] void put(const std::uint8_t* p) noexcept {
      std::uint32_t& pair = pairs_[hashAt(p)];
      pair = pair << 16 | ((lowBits(p) + bias_) & 0xFFFF);
    }

    std::uint32_t* pairs_;
    unsigned shift_;
    const std::uint8_t* start_;
    std::uint32_t bias_;  // from the lowest bits of an address to the place in the stream
    std::uint32_t hash_;  // of the place that is next
  };

  /// Whether places are missing before this one.
  bool leftOut(std::uint32_t position) const noexcept { return position != next_; }
  /// The next walk is expected to begin here.
  void endWalk(std::uint32_t position) noexcept { next_ = position; }

 private:
  static constexpr unsigned kMaxBits = 15;
  static constexpr unsigned kNice = 20;
  static constexpr unsigned kDense = 3;
  static constexpr std::uint32_t kMask = kMaxDistance - 1;

  unsigned shift_ = 32 - kMaxBits;
  std::uint32_t next_ = 0;
  std::array<std::uint32_t, std::size_t{1} << kMaxBits> pairs_;
};

}  // namespace zantrel::zee

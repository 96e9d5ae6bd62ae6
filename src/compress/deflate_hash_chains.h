#pragma once
// Finds earlier occurrences of the bytes at a place: places with the same hash of four bytes are
// chained, the latest first; for three bytes the latest place alone is kept.
//
// Whatever is longer than four bytes contains several fours, each with a chain of its own. So once
// a match is known, what could be longer is looked for along the chain of those of its fours that
// is thinnest there: nothing is missed, and most places that would disappoint are passed by.
//
// Places are stream positions modulo 65,536, so that tables stay small and nothing moves when the
// window does. Distances are then right as long as no table entry is older than 65,535 bytes, which
// a sweep over the tables makes sure of from time to time. Chains need none: they hold distances
// from one place to the next.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "compress/deflate_format.h"
#include "compress/deflate_matches.h"

namespace zantrel::zee {

struct Match {
  unsigned length;
  unsigned distance;
};

class HashChains final {
 public:
  /// Bytes that one walk may go over.
  static constexpr std::uint32_t kLongestWalk = 5120;

  /// To be called before a stream. `size` bounds its length if that is known to be short: fewer
  /// entries are then cleared.
  void start(std::size_t size) noexcept {
    bits_ = hashBits(size, kMaxBits);
    latestOf3_.fill(0);
    forget(0);
  }

  /// Goes over a piece: what it needs stays in registers meanwhile. Wherever it goes, 32,768 bytes
  /// can be read behind it, whether they belong to the stream or not.
  class Walk {
   public:
    /// `start` is where the stream, or what can be seen of it, begins; `p` is at `position`. What
    /// was left out since the last walk is made up for, and the tables are swept if it is time.
    Walk(HashChains& index, const std::uint8_t* start, const std::uint8_t* p,
         const std::uint8_t* end, std::uint32_t position) noexcept
        : latestOf4_(index.latestOf4_.data()),
          latestOf3_(index.latestOf3_.data()),
          gap_(index.gap_.data()),
          bits_(index.bits_),
          start_(start),
          end_(end),
          bias_(position - lowBits(p)) {
      if (position != index.next_) index.catchUp(p, position);
      if (position - index.swept_ >= kSweepEvery) index.sweep(position);
      prepare(p);
    }

    /// Puts a place into the index and answers the longest match there that is longer than
    /// `longerThan`, the nearest of equal ones; length 0 if there is none. A match of the length
    /// `nice` ends the search, and so does having looked at `depth` places.
    [[gnu::always_inline]] Match find(const std::uint8_t* p, unsigned longerThan, unsigned nice,
                                      unsigned depth) noexcept {
      const std::uint32_t here = placeOf(p);
      const unsigned distanceOf3 = (here - latestOf3_[hashOf3_]) & kChainMask;
      unsigned distance = backTo(here, latestOf4_[hashOf4_]);
      add(hashOf4_, here);
      latestOf3_[hashOf3_] = static_cast<std::uint16_t>(here);
      prepare(p + 1);

      const std::uint32_t first = load32(p);
      Match best{0, 0};
      if (longerThan < kMinMatch) {
        // Without a look at how old the entry is: the bytes tell as well, and more predictably.
        if (((load32(p - distanceOf3) ^ first) & 0xFFFFFF) == 0 && isDistance(distanceOf3, p) &&
            end_ - p > static_cast<std::ptrdiff_t>(kMinMatch))
          best = {kMinMatch, distanceOf3};
        longerThan = kMinMatch;
      }
      if (distance > kMaxDistance) return best;
      const unsigned limit = static_cast<unsigned>(std::min<std::ptrdiff_t>(end_ - p, kMaxMatch));
      if (limit <= kMinMatch) return best;
      nice = std::min(nice, limit);

      // Every longer match has `tail` too. Of the four bytes at `offset` the chain is followed.
      unsigned tailAt = longerThan - 3, offset = 0;
      std::uint32_t tail = load32(p + tailAt);
      if (tailAt > 0 && tailAt <= distance) {
        const unsigned distanceOfTail = backTo(here + tailAt, latestOf4_[hashOf(tail, bits_)]);
        if (distanceOfTail > distance) {
          distance = distanceOfTail;
          offset = tailAt;
        }
      }
      for (unsigned left = depth; distance <= kMaxDistance; --left) {
        const std::uint8_t* const q = p - distance;
        const std::uint32_t place = here - distance;
        if (load32(q + tailAt) == tail && load32(q) == first) {
          const unsigned length = matchLength(p, q, 4, limit);
          if (length > longerThan) {
            // Where it is not the start that is chained, that may lie before the stream.
            if (!isDistance(distance, p)) break;
            best = {length, distance};
            if (length >= nice) break;
            longerThan = length;
            tailAt = length - 3;
            tail = load32(p + tailAt);
            const unsigned last = length - 4;
            if (last <= distance && gapAt(place + last) > gapAt(place + offset)) offset = last;
          }
        }
        if (left == 1) break;
        distance += gapAt(place + offset);
      }
      return best;
    }

    /// Puts the rest of a match into the index; three bytes are not looked for there.
    [[gnu::always_inline]] void skipMatch(const std::uint8_t* p, const std::uint8_t* end) noexcept {
      for (; p < end; ++p) add(hashOf(load32(p), bits_), placeOf(p));
      prepare(p);
    }

   private:
    static std::uint32_t lowBits(const std::uint8_t* p) noexcept {
      return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(p));
    }
    static unsigned backTo(std::uint32_t here, unsigned place) noexcept {
      return (here - place) & 0xFFFF;
    }
    std::uint32_t placeOf(const std::uint8_t* p) const noexcept { return lowBits(p) + bias_; }
    bool isDistance(unsigned distance, const std::uint8_t* p) const noexcept {
      return distance - 1U < static_cast<std::size_t>(p - start_);
    }
    /// From a place in the index to the one before it in its chain.
    unsigned gapAt(std::uint32_t place) const noexcept { return gap_[place & kChainMask]; }

    [[gnu::always_inline]] void add(std::uint32_t hash, std::uint32_t place) noexcept {
      gap_[place & kChainMask] = static_cast<std::uint16_t>(place - latestOf4_[hash]);
      latestOf4_[hash] = static_cast<std::uint16_t>(place);
    }
    [[gnu::always_inline]] void prepare(const std::uint8_t* p) noexcept {
      const std::uint32_t four = load32(p);
      hashOf3_ = hashOf(four << 8, kBitsOf3);
      hashOf4_ = hashOf(four, bits_);
      __builtin_prefetch(&latestOf3_[hashOf3_], 1);
      __builtin_prefetch(&latestOf4_[hashOf4_], 1);
    }

    std::uint16_t* latestOf4_;
    std::uint16_t* latestOf3_;
    std::uint16_t* gap_;
    unsigned bits_;
    const std::uint8_t* start_;
    const std::uint8_t* end_;
    std::uint32_t bias_;  // from the lowest bits of an address to the place in the stream
    std::uint32_t hashOf3_, hashOf4_;  // of the place that is next
  };

  /// The next walk is expected to begin here.
  void endWalk(std::uint32_t position) noexcept { next_ = position; }

 private:
  static constexpr unsigned kMaxBits = 16;
  static constexpr unsigned kBitsOf3 = 15;
  static constexpr unsigned kChainMask = kMaxDistance - 1;
  static constexpr unsigned kTooFar = kMaxDistance + 1;
  static constexpr std::uint32_t kSweepEvery = 24576;
  // Behind a sweep, until an entry's age would pass 65,535.
  static constexpr std::uint32_t kMaxCatchUp = 65535 - kTooFar;
  static_assert(kSweepEvery + kLongestWalk + kMaxMatch < kMaxCatchUp);

  void catchUp(const std::uint8_t* p, std::uint32_t position) noexcept;
  void sweep(std::uint32_t position) noexcept;
  void forget(std::uint32_t position) noexcept;

  unsigned bits_ = kMaxBits;
  std::uint32_t next_ = 0;   // the first place that is not in the index
  std::uint32_t swept_ = 0;  // where the tables were swept last
  std::array<std::uint16_t, std::size_t{1} << kMaxBits> latestOf4_;
  std::array<std::uint16_t, std::size_t{1} << kBitsOf3> latestOf3_;
  std::array<std::uint16_t, kMaxDistance> gap_;
};

}  // namespace zantrel::zee

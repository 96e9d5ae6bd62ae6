#pragma once
// Finds earlier occurrences of the bytes at a place: places with the same hash of four bytes are
// chained, the latest first; for three bytes the latest place alone is kept.
//
// Places are stream positions modulo 65,536, so that tables stay small and nothing moves when the
// window does. Distances are then right as long as no table entry is older than 65,535 bytes, which
// a sweep over the tables makes sure of from time to time. Chains need none: an entry too old shows
// itself by a distance that does not grow.

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

/// How much a search may cost.
struct Search {
  unsigned limit;  ///< longest match wanted, 258 or what the data have left
  unsigned nice;   ///< a match of this length ends the search
  unsigned depth;  ///< places looked at
};

class HashChains final {
 public:
  /// To be called before a stream. `size` bounds its length if that is known to be short: fewer
  /// entries are then cleared.
  void start(std::size_t size) noexcept {
    bits_ = std::clamp(static_cast<unsigned>(std::bit_width(size)), 8U, kMaxBits);
    forget(0);
  }

  /// To be called before a piece, with the first place: brings in the places since the last one,
  /// and sweeps the tables if it is time.
  void startPiece(const std::uint8_t* p, std::uint32_t position) noexcept {
    if (position != next_) catchUp(p, position);
    if (position - swept_ >= kSweepEvery) sweep(position);
    prepare(p);
  }

  /// Puts a place into the index, without looking for matches.
  [[gnu::always_inline]] void skip(const std::uint8_t* p) noexcept {
    const auto here = static_cast<std::uint16_t>(next_++);
    previous_[here & kChainMask] = latestOf4_[hashOf4_];
    latestOf4_[hashOf4_] = here;
    latestOf3_[hashOf3_] = here;
    prepare(p + 1);
  }

  /// The same for the rest of a match; three bytes are not looked for there.
  [[gnu::always_inline]] void skipMatch(const std::uint8_t* p, const std::uint8_t* end) noexcept {
    for (; p < end; ++p) {
      const std::uint32_t hash = hashOf(load32(p), bits_);
      const auto here = static_cast<std::uint16_t>(next_++);
      previous_[here & kChainMask] = latestOf4_[hash];
      latestOf4_[hash] = here;
    }
    prepare(p);
  }

  /// Puts a place into the index and answers the longest match there that is longer than
  /// `longerThan`, the nearest of equal ones; length 0 if there is none.
  [[gnu::always_inline]] Match find(const std::uint8_t* p, unsigned longerThan,
                                    const Search& search) noexcept {
    const auto here = static_cast<std::uint16_t>(next_);
    const unsigned candidate4 = latestOf4_[hashOf4_];
    const unsigned candidate3 = latestOf3_[hashOf3_];
    skip(p);
    Match best{0, 0};
    if (search.limit < 4) return best;
    const std::uint32_t first = load32(p);
    if (longerThan < kMinMatch) {
      const unsigned distance = backTo(here, candidate3);
      if (distance - 1 < kMaxDistance && ((load32(p - distance) ^ first) & 0xFFFFFF) == 0)
        best = {kMinMatch, distance};
      longerThan = kMinMatch;
    }
    std::uint32_t tail = load32(p + longerThan - 3);
    unsigned nearer = 0, distance = backTo(here, candidate4);
    for (unsigned left = search.depth; distance > nearer && distance <= kMaxDistance; --left) {
      const std::uint8_t* const q = p - distance;
      if (load32(q + longerThan - 3) == tail && load32(q) == first) {
        const unsigned length = matchLength(p, q, 4, search.limit);
        if (length > longerThan) {
          best = {length, distance};
          if (length >= search.nice) break;
          longerThan = length;
          tail = load32(p + length - 3);
        }
      }
      if (left == 1) break;
      nearer = distance;
      distance = backTo(here, previous_[(here - distance) & kChainMask]);
    }
    return best;
  }

 private:
  static constexpr unsigned kMaxBits = 16;
  static constexpr unsigned kBitsOf3 = 15;
  static constexpr unsigned kChainMask = kMaxDistance - 1;
  static constexpr unsigned kTooFar = kMaxDistance + 1;
  static constexpr std::uint32_t kSweepEvery = 24576;

  static unsigned backTo(std::uint16_t here, unsigned place) noexcept {
    return (here - place) & 0xFFFF;
  }

  [[gnu::always_inline]] void prepare(const std::uint8_t* p) noexcept {
    const std::uint32_t four = load32(p);
    hashOf3_ = hashOf(four << 8, bitsOf3());
    hashOf4_ = hashOf(four, bits_);
    __builtin_prefetch(&latestOf3_[hashOf3_], 1);
    __builtin_prefetch(&latestOf4_[hashOf4_], 1);
  }
  unsigned bitsOf3() const noexcept { return kBitsOf3; }

  void catchUp(const std::uint8_t* p, std::uint32_t position) noexcept;
  void sweep(std::uint32_t position) noexcept;
  void forget(std::uint32_t position) noexcept;

  unsigned bits_ = kMaxBits;
  std::uint32_t next_ = 0;   // the first place that is not in the index
  std::uint32_t swept_ = 0;  // where the tables were swept last
  std::uint32_t hashOf3_ = 0, hashOf4_ = 0;
  std::array<std::uint16_t, std::size_t{1} << kMaxBits> latestOf4_;
  std::array<std::uint16_t, std::size_t{1} << kBitsOf3> latestOf3_;
  std::array<std::uint16_t, kMaxDistance> previous_;
};

}  // namespace zantrel::zee

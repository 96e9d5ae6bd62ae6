#pragma once
// The two latest places with the same hash, for the fastest level. Places are stream positions
// modulo 32,768, and nothing is swept: what an entry too old seems to say is compared with the
// bytes like any other. What can be decided without a branch is: few of them can be foreseen.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compress/deflate_format.h"
#include "compress/deflate_hash_chains.h"
#include "compress/deflate_matches.h"

namespace zantrel::zee {

class HashPairs final {
  struct Pair {
    std::uint16_t near, far;
    void add(std::uint32_t place) noexcept {
      far = near;
      near = static_cast<std::uint16_t>(place);
    }
  };

 public:
  /// As in HashChains.
  void start(std::size_t size) noexcept {
    mask_ = (std::size_t{1} << hashBits(size, kMaxBits)) - 1;
    next_ = 0;
    std::memset(pairs_.data(), 0, (mask_ + 1) * sizeof(Pair));
  }

  /// Goes over a piece: what it needs stays in registers meanwhile. Wherever it goes, 32,768 bytes
  /// can be read behind it, whether they belong to the stream or not.
  class Walk {
   public:
    /// Hashes are of so many bytes, at least 4; walks that differ in that do not see each other's
    /// places. `start` is where the stream, or what can be seen of it, begins; `p` is at
    /// `position`. What was left out since the last walk is made up for.
    Walk(HashPairs& index, unsigned hashedBytes, const std::uint8_t* start, const std::uint8_t* p,
         std::uint32_t position) noexcept
        : pairs_(index.pairs_.data()),
          mask_(index.mask_),
          factor_(std::uint64_t{0x9E3779B185EBCA87U} << (64 - 8 * hashedBytes)),
          start_(start),
          bias_(position - lowBits(p)) {
      const std::size_t gap = std::min<std::size_t>(position - index.next_, kMaxDistance);
      for (const std::uint8_t* missing = p - gap; missing < p; ++missing) put(missing);
      pair_ = pairOf(p);
    }

    /// Puts a place into the index. False if no match was found there.
    [[gnu::always_inline]] bool find(const std::uint8_t* p, unsigned limit, Match& match) noexcept {
      const std::uint32_t here = placeOf(p);
      const std::uint32_t near = (here - pair_->near) & kMask, far = (here - pair_->far) & kMask;
      pair_->add(here);
      pair_ = pairOf(p + 1);
      __builtin_prefetch(pair_, 1);

      const std::uint64_t word = load64(p);
      const unsigned inNear = equalBytes(word, load64(p - near));
      const unsigned inFar = equalBytes(word, load64(p - far));
      const unsigned common = std::max(inNear, inFar);
      if (common < kShortest) return false;
      match = {common, inFar > inNear ? far : near};
      if (!isDistance(match.distance, p) || limit < kWhole) [[unlikely]]
        return false;
      if (common < kWhole) return true;
      match.length = matchLength(p, p - match.distance, kWhole, limit);
      if (inNear == inFar && match.length < std::min(kNice, limit) && isDistance(far, p) &&
          load32(p - far + match.length - 3) == load32(p + match.length - 3)) {
        const unsigned length = matchLength(p, p - far, kWhole, limit);
        if (length > match.length) match = {length, far};
      }
      return true;
    }

    /// Puts places of a match behind its first into the index: the ones near its ends, where the
    /// next time a match is likely to begin, and of those between, if it is long, every other.
    [[gnu::always_inline]] void skipMatch(const std::uint8_t* p, unsigned length) noexcept {
      constexpr unsigned kLong = 16, kDense = 8;
      const std::uint8_t* const end = p + length;
      put(p + 1);
      put(p + 2);
      if (length > kLong) {
        for (p += 4; p < end - kDense; p += 2) put(p);
        for (p = end - kDense; p < end - 2; ++p) put(p);
      }
      put(end - 2);
      put(end - 1);
      pair_ = pairOf(end);
    }

   private:
    static constexpr unsigned kShortest = 4;
    static constexpr unsigned kWhole = 7;  // of a word: what is equal there may be longer

    static unsigned equalBytes(std::uint64_t a, std::uint64_t b) noexcept {
      return static_cast<unsigned>(std::countr_zero((a ^ b) | std::uint64_t{1} << 63)) / 8;
    }
    static std::uint32_t lowBits(const std::uint8_t* p) noexcept {
      return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(p));
    }
    std::uint32_t placeOf(const std::uint8_t* p) const noexcept { return lowBits(p) + bias_; }
    bool isDistance(std::uint32_t distance, const std::uint8_t* p) const noexcept {
      return distance - 1U < static_cast<std::size_t>(p - start_);
    }
    Pair* pairOf(const std::uint8_t* p) const noexcept {
      // The factor shifts the bytes to the top, so that the others do not count.
      return pairs_ + ((load64(p) * factor_ >> (64 - kMaxBits)) & mask_);
    }
    [[gnu::always_inline]] void put(const std::uint8_t* p) noexcept { pairOf(p)->add(placeOf(p)); }

    Pair* pairs_;
    std::size_t mask_;
    std::uint64_t factor_;
    const std::uint8_t* start_;
    std::uint32_t bias_;  // from the lowest bits of an address to the place in the stream
    Pair* pair_;          // of the place that is next
  };

  /// Whether places are missing before this one.
  bool leftOut(std::uint32_t position) const noexcept { return position != next_; }
  /// The next walk is expected to begin here.
  void endWalk(std::uint32_t position) noexcept { next_ = position; }

 private:
  static constexpr unsigned kMaxBits = 15;
  static constexpr unsigned kNice = 32;
  static constexpr std::uint32_t kMask = kMaxDistance - 1;

  std::size_t mask_ = 0;
  std::uint32_t next_ = 0;
  std::array<Pair, std::size_t{1} << kMaxBits> pairs_;
};

}  // namespace zantrel::zee

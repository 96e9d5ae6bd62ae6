#include "compress/deflate_parser.h"

#include <algorithm>
#include <bit>
#include <new>

#include "compress/deflate_hash_chains.h"
#include "compress/deflate_hash_pairs.h"

namespace zantrel::zee {

namespace {

/// How hard a level tries. A longer match than one found is looked for at so many places behind.
struct Effort {
  unsigned nice;
  unsigned depth;
  unsigned lookAhead;
};

constexpr Effort kEfforts[10] = {
    {},          {},          {10, 6, 0},    {14, 12, 0},   {30, 16, 0},
    {30, 16, 1}, {65, 35, 1}, {130, 100, 1}, {258, 300, 2}, {258, 600, 2},
};

/// Short matches far away cost more than their literals.
constexpr unsigned kFarForThree = 4096;

bool worthTaking(const Match& m) noexcept {
  return m.length > kMinMatch || (m.length == kMinMatch && m.distance <= kFarForThree);
}

/// Roughly what a match spares, in quarters of a byte.
int worth(const Match& m) noexcept {
  return static_cast<int>(4 * m.length) - static_cast<int>(std::bit_width(m.distance));
}

class ChainParser final : public Parser {
 public:
  explicit ChainParser(const Effort& effort) : effort_(effort) {}

  void start(std::size_t size) noexcept override { index_.start(size); }

  std::size_t parse(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                    Frequencies& counts) override {
    return effort_.lookAhead == 0   ? run<0>(window, next, stop, block, counts)
           : effort_.lookAhead == 1 ? run<1>(window, next, stop, block, counts)
                                    : run<2>(window, next, stop, block, counts);
  }

 private:
  template <unsigned LookAhead>
  std::size_t run(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                  Frequencies& counts) {
    const std::uint8_t* const begin = window.bytes;
    const std::uint8_t* const stopAt = begin + stop;
    const std::uint8_t* const end = begin + window.end;
    const std::uint8_t* p = begin + next;
    const std::uint8_t* literals = p;
    index_.startPiece(p, window.position + static_cast<std::uint32_t>(next));

    const auto search = [&](const std::uint8_t* at, unsigned longerThan, unsigned depth) {
      Search s{kMaxMatch, effort_.nice, depth};
      if (static_cast<std::size_t>(end - at) < kMaxMatch) [[unlikely]] {
        s.limit = static_cast<unsigned>(end - at);
        s.nice = std::min(s.nice, s.limit);
      }
      return index_.find(at, longerThan, s);
    };

    while (p < stopAt) {
      Match match = search(p, kMinMatch - 1, effort_.depth);
      if (!worthTaking(match)) {
        ++counts.literal[*p++];
        continue;
      }
      // `p` is where the match starts, `known` the first place that is not in the index.
      const std::uint8_t* known = p + 1;
      if constexpr (LookAhead > 0) {
        while (match.length < effort_.nice) {
          const Match next1 = search(known++, match.length - 1, effort_.depth / 2);
          if (next1.length >= match.length && worth(next1) > worth(match) + 2) {
            ++counts.literal[*p++];
            match = next1;
            continue;
          }
          if constexpr (LookAhead > 1) {
            const Match next2 = search(known++, match.length - 1, effort_.depth / 4);
            if (next2.length >= match.length && worth(next2) > worth(match) + 6) {
              ++counts.literal[*p++];
              ++counts.literal[*p++];
              match = next2;
              continue;
            }
          }
          break;
        }
      }
      block.addMatch(static_cast<std::size_t>(p - literals), match.length, match.distance, counts);
      p += match.length;
      while (known < p) index_.skip(known++);
      literals = p;
    }
    block.addLiterals(static_cast<std::size_t>(p - literals));
    return static_cast<std::size_t>(p - begin);
  }

  const Effort effort_;
  HashChains index_;
};

/// Of the two latest places with the same hash the one with the longer match, taken at once.
class PairParser final : public Parser {
 public:
  void start(std::size_t size) noexcept override { index_.start(size); }

  std::size_t parse(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                    Frequencies& counts) override {
    const std::uint8_t* const begin = window.bytes;
    const std::uint8_t* const stopAt = begin + stop;
    const std::uint8_t* const end = begin + window.end;
    const std::uint8_t* p = begin + next;
    const std::uint8_t* literals = p;
    index_.startPiece(p, window.position + static_cast<std::uint32_t>(next));
    while (p < stopAt) {
      unsigned limit = kMaxMatch;
      if (static_cast<std::size_t>(end - p) < kMaxMatch) [[unlikely]]
        limit = static_cast<unsigned>(end - p);
      const Match match = index_.find(p, limit);
      if (match.length == 0) {
        ++counts.literal[*p++];
        continue;
      }
      block.addMatch(static_cast<std::size_t>(p - literals), match.length, match.distance, counts);
      index_.skipMatch(p + 1, match.length - 1);
      p += match.length;
      literals = p;
    }
    block.addLiterals(static_cast<std::size_t>(p - literals));
    return static_cast<std::size_t>(p - begin);
  }

 private:
  HashPairs index_;
};

}  // namespace

std::unique_ptr<Parser> makeParser(int level) {
  if (level == 1) return std::unique_ptr<Parser>(new (std::nothrow) PairParser);
  return std::unique_ptr<Parser>(new (std::nothrow) ChainParser(kEfforts[level]));
}

}  // namespace zantrel::zee

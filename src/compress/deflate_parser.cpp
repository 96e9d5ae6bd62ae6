#include "compress/deflate_parser.h"

#include <algorithm>
#include <bit>
#include <new>

#include "compress/deflate_block_split.h"
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
    {},          {},           {16, 5, 0},   {24, 10, 0},   {48, 16, 0},
    {96, 10, 1}, {258, 24, 1}, {258, 50, 1}, {258, 150, 2}, {258, 1000, 2},
};

/// Roughly what a match spares, in quarters of a byte.
int worth(const Match& m) noexcept {
  return static_cast<int>(4 * m.length) - static_cast<int>(std::bit_width(m.distance));
}

class ChainParser final : public Parser {
 public:
  explicit ChainParser(const Effort& effort) : effort_(effort) {}

  void start(std::size_t size) noexcept override {
    index_.start(size);
    literalCost_ = 5 * kBit;
    shortest_ = kMinMatch;
    pieces_ = 0;
  }

  std::size_t parse(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                    Frequencies& counts) override {
    if (pieces_ < 4 || pieces_ % 4 == 0) judgeLiterals(counts);
    ++pieces_;
    return effort_.lookAhead == 0   ? run<0>(window, next, stop, block, counts)
           : effort_.lookAhead == 1 ? run<1>(window, next, stop, block, counts)
                                    : run<2>(window, next, stop, block, counts);
  }

 private:
  static_assert(kPiece + kOverrun <= HashChains::kLongestWalk);
  static constexpr unsigned kBit = 16;     // costs are counted in sixteenths of a bit
  static constexpr unsigned kSymbols = 6;  // bits of a match's two symbols, about

  void judgeLiterals(const Frequencies& counts) noexcept {
    constexpr std::uint64_t kEnough = 512;
    std::uint64_t sum = 0;
    for (unsigned i = 0; i < kEndOfBlock; ++i) sum += counts.literal[i];
    if (sum < kEnough) return;
    literalCost_ =
        static_cast<unsigned>((idealBits(counts.literal.data(), kEndOfBlock) / sum) >> 12);
    // What pays at small distances only is so rarely found there that it is not looked for.
    constexpr unsigned kSmall = 12;
    constexpr unsigned kLongest = 16;
    const unsigned cost = std::max(literalCost_, 1U);
    shortest_ = std::clamp((kSymbols + kSmall) * kBit / cost + 1, kMinMatch, kLongest);
  }

  /// How deep to look for something better than a match of this length: a long one is hard to beat.
  static unsigned depthBeyond(unsigned length, unsigned depth) noexcept {
    constexpr unsigned kLong = 24;
    return std::max(depth / (length < kLong ? 2 : 8), 1U);
  }

  /// Whether a match takes fewer bits than its literals would, about: its symbols take some bits
  /// and the rest of the distance as many as it has.
  static bool worthTaking(const Match& m, unsigned literalCost) noexcept {
    return m.length * literalCost >
           (kSymbols + static_cast<unsigned>(std::bit_width(m.distance | 1))) * kBit;
  }

  template <unsigned LookAhead>
  std::size_t run(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                  Frequencies& counts) {
    const std::uint8_t* const begin = window.bytes;
    const std::uint8_t* const stopAt = begin + stop;
    const std::uint8_t* p = begin + next;
    const std::uint8_t* literals = p;
    const unsigned nice = effort_.nice, depth = effort_.depth;
    const unsigned literalCost = literalCost_, longerThan = shortest_ - 1;
    Block::Writer writer(block, counts);
    HashChains::Walk walk(index_, begin, p, begin + window.end,
                          window.position + static_cast<std::uint32_t>(next));

    while (p < stopAt) {
      Match match = walk.find(p, longerThan, nice, depth);
      if (!worthTaking(match, literalCost)) {
        writer.countLiteral(*p++);
        continue;
      }
      // `p` is where the match starts, `known` the first place that is not in the index.
      const std::uint8_t* known = p + 1;
      if constexpr (LookAhead > 0) {
        while (match.length < nice) {
          const Match next1 =
              walk.find(known++, match.length - 1, nice, depthBeyond(match.length, depth));
          if (next1.length >= match.length && worth(next1) > worth(match) + 2) {
            writer.countLiteral(*p++);
            match = next1;
            continue;
          }
          if constexpr (LookAhead > 1) {
            const Match next2 = walk.find(known++, match.length - 1, nice, depth / 4);
            if (next2.length >= match.length && worth(next2) > worth(match) + 6) {
              writer.countLiteral(*p++);
              writer.countLiteral(*p++);
              match = next2;
              continue;
            }
          }
          break;
        }
      }
      writer.addMatch(static_cast<std::size_t>(p - literals), match.length, match.distance);
      p += match.length;
      if (known < p) walk.skipMatch(known, p);
      literals = p;
    }
    writer.addLiterals(static_cast<std::size_t>(p - literals));
    index_.endWalk(window.position + static_cast<std::uint32_t>(p - begin));
    return static_cast<std::size_t>(p - begin);
  }

  const Effort effort_;
  HashChains index_;
  unsigned literalCost_ = 0;
  unsigned shortest_ = kMinMatch;  // match that is looked for
  unsigned pieces_ = 0;
};

/// Of the two latest places with the same hash the one with the longer match, taken at once.
class PairParser final : public Parser {
 public:
  void start(std::size_t size) noexcept override {
    index_.start(size);
    hashedBytes_ = kUsual;
  }

  std::size_t parse(const WindowView& window, std::size_t next, std::size_t stop, Block& block,
                    Frequencies& counts) override {
    const std::uint32_t position = window.position + static_cast<std::uint32_t>(next);
    if (index_.leftOut(position))
      hashedBytes_ = kFewest;  // it was noise
    else
      judgeLiterals(counts);

    const std::uint8_t* const begin = window.bytes;
    const std::uint8_t* const end = begin + window.end;
    const std::uint8_t* const stopAt = begin + stop;
    const std::uint8_t* p = begin + next;
    const std::uint8_t* literals = p;
    Block::Writer writer(block, counts);
    HashPairs::Walk walk(index_, hashedBytes_, begin, p, position);
    const auto step = [&](unsigned limit) __attribute__((always_inline)) {
      Match match;
      if (!walk.find(p, limit, match)) {
        writer.countLiteral(*p++);
        return;
      }
      writer.addMatch(static_cast<std::size_t>(p - literals), match.length, match.distance);
      walk.skipMatch(p, match.length);
      p += match.length;
      literals = p;
    };
    const std::uint8_t* const fullLengthEnd =
        window.end >= kMaxMatch ? std::min(stopAt, end - kMaxMatch) : begin;
    while (p < fullLengthEnd) step(kMaxMatch);
    while (p < stopAt) step(static_cast<unsigned>(std::min<std::ptrdiff_t>(end - p, kMaxMatch)));
    writer.addLiterals(static_cast<std::size_t>(p - literals));
    index_.endWalk(window.position + static_cast<std::uint32_t>(p - begin));
    return static_cast<std::size_t>(p - begin);
  }

 private:
  // A longer hash finds fewer matches, but longer ones: that pays where literals are cheap, the
  // more the fewer different ones there are. Programs have many, prose has few.
  static constexpr unsigned kFewest = 4, kUsual = 5, kMost = 6;

  void judgeLiterals(const Frequencies& counts) noexcept {
    constexpr std::uint32_t kEnough = 4096;
    constexpr unsigned kMany = 160, kFew = 72;
    std::uint32_t sum = 0;
    unsigned used = 0;
    for (unsigned i = 0; i < kEndOfBlock; ++i) {
      sum += counts.literal[i];
      used += counts.literal[i] != 0 ? 1 : 0;
    }
    if (sum >= kEnough) hashedBytes_ = used >= kMany ? kFewest : used < kFew ? kMost : kUsual;
  }

  HashPairs index_;
  unsigned hashedBytes_ = kUsual;
};

}  // namespace

std::unique_ptr<Parser> makeParser(int level) {
  if (level == 1) return std::unique_ptr<Parser>(new (std::nothrow) PairParser);
  return std::unique_ptr<Parser>(new (std::nothrow) ChainParser(kEfforts[level]));
}

}  // namespace zantrel::zee

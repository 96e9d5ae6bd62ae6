// The RIPEMD family: two lines of 64 steps on four words or 80 steps on five, which share nothing
// but the message until their end. They are interleaved step by step, so that the processor always
// has two independent chains to work on. The double-length digests keep both lines as their result
// and exchange one word between them after each round.

#include "crypto/ripemd.h"

#include <bit>
#include <utility>

namespace zantrel {
namespace {

using Word = std::uint32_t;

// Message words, rotations, functions and constants of the steps, by line and round.
constexpr int kIndex[2][80] = {
    {0,  1, 2,  3, 4,  5,  6, 7,  8, 9,  10, 11, 12, 13, 14, 15, 7,  4,  13, 1,
     10, 6, 15, 3, 12, 0,  9, 5,  2, 14, 11, 8,  3,  10, 14, 4,  9,  15, 8,  1,
     2,  7, 0,  6, 13, 11, 5, 12, 1, 9,  11, 10, 0,  8,  12, 4,  13, 3,  7,  15,
     14, 5, 6,  2, 4,  0,  5, 9,  7, 12, 2,  10, 14, 1,  3,  8,  11, 6,  15, 13},
    {5,  14, 7,  0,  9,  2,  11, 4,  13, 6, 15, 8, 1,  10, 3,  12, 6, 11, 3, 7,
     0,  13, 5,  10, 14, 15, 8,  12, 4,  9, 1,  2, 15, 5,  1,  3,  7, 14, 6, 9,
     11, 8,  12, 2,  10, 0,  4,  13, 8,  6, 4,  1, 3,  11, 15, 0,  5, 12, 2, 13,
     9,  7,  10, 14, 12, 15, 10, 4,  1,  5, 8,  7, 6,  2,  13, 14, 0, 3,  9, 11}};
constexpr int kShift[2][80] = {
    {11, 14, 15, 12, 5, 8,  7,  9,  11, 13, 14, 15, 6,  7,  9,  8,  7,  6,  8,  13,
     11, 9,  7,  15, 7, 12, 15, 9,  11, 7,  13, 12, 11, 13, 6,  7,  14, 9,  13, 15,
     14, 8,  13, 6,  5, 12, 7,  5,  11, 12, 14, 15, 14, 15, 9,  8,  9,  14, 5,  6,
     8,  6,  5,  12, 9, 15, 5,  11, 6,  8,  13, 12, 5,  12, 13, 14, 11, 8,  5,  6},
    {8,  9,  9,  11, 13, 15, 15, 5, 7,  7,  8,  11, 14, 14, 12, 6,  9,  13, 15, 7,
     12, 8,  9,  11, 7,  7,  12, 7, 6,  15, 13, 11, 9,  7,  15, 11, 8,  6,  6,  14,
     12, 13, 5,  14, 13, 13, 7,  5, 15, 5,  8,  11, 14, 14, 6,  14, 6,  9,  12, 9,
     12, 5,  15, 8,  8,  5,  12, 9, 12, 5,  14, 6,  8,  13, 6,  5,  15, 13, 11, 11}};
constexpr Word kConstant[2][5] = {{0, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xA953FD4E},
                                  {0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x7A6D76E9, 0}};
// The right line of the shorter digests has the last constant, zero, in its fourth round.
constexpr Word constantOf(int line, int round, int rounds) {
  return line == 1 && round == rounds - 1 ? 0 : kConstant[line][round];
}

// sum + f(x, y, z) for function f of 0 to 4. x is the newest word: it joins last, and choices are
// sums of two terms that share no bit.
template <int Function>
[[gnu::always_inline]] inline Word plus(Word sum, Word x, Word y, Word z) {
  if constexpr (Function == 0) return sum + (x ^ (y ^ z));
  if constexpr (Function == 1) return sum + (((y ^ z) & x) ^ z);
  if constexpr (Function == 2) return sum + ((x | ~y) ^ z);
  if constexpr (Function == 3) return sum + (y & ~z) + (x & z);
  if constexpr (Function == 4) return sum + (x ^ (y | ~z));
}

// The words of a line after `Step` steps, by their letter: nothing moves, the names do.
template <int Words>
constexpr int at(int letter, int step) {
  return (letter - step % Words + Words) % Words;
}

template <int Words, int Line, int Step>
[[gnu::always_inline]] inline void step(Word (&v)[Words], const std::uint8_t* block) {
  constexpr int kRounds = Words == 5 ? 5 : 4;
  constexpr int kRound = Step / 16;
  Word& a = v[at<Words>(0, Step)];
  const Word b = v[at<Words>(1, Step)];
  Word& c = v[at<Words>(2, Step)];
  const Word d = v[at<Words>(3, Step)];
  const Word x = loadWord<Word, std::endian::little>(block + 4 * kIndex[Line][Step]);
  a += x + constantOf(Line, kRound, kRounds);
  a = std::rotl(plus < Line == 0 ? kRound : kRounds - 1 - kRound > (a, b, c, d),
                kShift[Line][Step]);
  if constexpr (Words == 5) {
    a += v[at<Words>(4, Step)];
    c = std::rotl(c, 10);
  }
}

// The word, by its letter, that the lines of a double-length digest exchange after a round.
constexpr int kExchanged[2][5] = {{0, 1, 2, 3, 0}, {1, 3, 0, 2, 4}};

template <int Words, bool Exchange, int Step = 0>
[[gnu::always_inline]] inline void steps(Word (&left)[Words], Word (&right)[Words],
                                         const std::uint8_t* block) {
  step<Words, 0, Step>(left, block);
  step<Words, 1, Step>(right, block);
  constexpr int kNext = Step + 1;
  if constexpr (Exchange && kNext % 16 == 0) {
    constexpr int kWord = at<Words>(kExchanged[Words - 4][Step / 16], kNext);
    std::swap(left[kWord], right[kWord]);
  }
  if constexpr (kNext < (Words == 5 ? 80 : 64)) steps<Words, Exchange, kNext>(left, right, block);
}

/// A digest of `Words` words: the lines start alike and are added crosswise.
template <int Words>
[[gnu::always_inline]] inline void singleLength(Word* h, const std::uint8_t* blocks,
                                                std::size_t count) {
  for (; count > 0; --count, blocks += 64) {
    Word left[Words], right[Words];
    for (int i = 0; i < Words; ++i) left[i] = right[i] = h[i];
    steps<Words, false>(left, right, blocks);
    Word sum[Words];
    for (int i = 0; i < Words; ++i) {  // 64 and 80 steps bring every letter back to its place
      const int next = (i + 1) % Words;
      sum[i] = h[next] + left[(i + 2) % Words] + right[(i + 3) % Words];
    }
    for (int i = 0; i < Words; ++i) h[i] = sum[i];
  }
}

/// A digest of 2 * `Words` words, one half a line.
template <int Words>
[[gnu::always_inline]] inline void doubleLength(Word* h, const std::uint8_t* blocks,
                                                std::size_t count) {
  for (; count > 0; --count, blocks += 64) {
    Word left[Words], right[Words];
    for (int i = 0; i < Words; ++i) {
      left[i] = h[i];
      right[i] = h[Words + i];
    }
    steps<Words, true>(left, right, blocks);
    for (int i = 0; i < Words; ++i) {
      h[i] += left[i];
      h[Words + i] += right[i];
    }
  }
}

}  // namespace

void Ripemd128State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  singleLength<4>(words_.data(), blocks, count);
}

void Ripemd160State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  singleLength<5>(words_.data(), blocks, count);
}

void Ripemd256State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  doubleLength<4>(words_.data(), blocks, count);
}

void Ripemd320State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  doubleLength<5>(words_.data(), blocks, count);
}

}  // namespace zantrel

#pragma once
// SHA-2 is one round in two word sizes (FIPS 180-4, sections 4.1.2 and 4.1.3). In plain C++, always
// inlined, so that each instruction set compiles it for itself (with BMI1 and BMI2 there are
// rotations into another register and and-not).
//
// The newest word e enters a round late: h, the message, the constant and ~e & g are summed first.
// Ch and Maj are sums of terms that share no bit, and each round's a ^ b serves the next one's Maj.

#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"
#include "crypto/sha_kernels.h"

namespace zantrel::sha {

template <class Word>
struct Sha2;

template <>
struct Sha2<std::uint32_t> {
  static constexpr int kRounds = 64;
  static constexpr int kBigA[3] = {2, 13, 22};
  static constexpr int kBigE[3] = {6, 11, 25};
  static constexpr int kSmall0[3] = {7, 18, 3};  // two rotations and a shift
  static constexpr int kSmall1[3] = {17, 19, 10};
  static const std::uint32_t* constants() noexcept { return kRound256; }
};

template <>
struct Sha2<std::uint64_t> {
  static constexpr int kRounds = 80;
  static constexpr int kBigA[3] = {28, 34, 39};
  static constexpr int kBigE[3] = {14, 18, 41};
  static constexpr int kSmall0[3] = {1, 8, 7};
  static constexpr int kSmall1[3] = {19, 61, 6};
  static const std::uint64_t* constants() noexcept { return kRound512; }
};

template <class Word>
[[gnu::always_inline]] inline Word rotations(Word x, const int (&by)[3]) {
  return std::rotr(x, by[0]) ^ std::rotr(x, by[1]) ^ std::rotr(x, by[2]);
}

template <class Word>
[[gnu::always_inline]] inline Word smallSigma(Word x, const int (&by)[3]) {
  return std::rotr(x, by[0]) ^ std::rotr(x, by[1]) ^ (x >> by[2]);
}

/// One round; v is indexed so that nothing moves. `added` is message word plus constant; `ab` is
/// a ^ b of this round on return, of the round before on entry. ShortChain has the next e one
/// operation earlier for two more additions: a gain where the message schedule is made elsewhere.
template <int Round, bool ShortChain = false, class Word>
[[gnu::always_inline]] inline void sha2Round(Word (&v)[8], Word& ab, Word added) {
  using S = Sha2<Word>;
  const Word a = v[(0 - Round) & 7];
  const Word b = v[(1 - Round) & 7];
  Word& d = v[(3 - Round) & 7];
  const Word e = v[(4 - Round) & 7];
  const Word f = v[(5 - Round) & 7];
  const Word g = v[(6 - Round) & 7];
  Word& h = v[(7 - Round) & 7];
  h += added;
  if constexpr (ShortChain) {
    d += h;
    const Word ch = ((f ^ g) & e) ^ g;
    const Word rotated = rotations(e, S::kBigE);
    h += ch;
    d += ch;
    h += rotated;
    d += rotated;
  } else {
    h += ~e & g;
    h += e & f;
    h += rotations(e, S::kBigE);
    d += h;
  }
  const Word bc = ab;
  ab = a ^ b;
  h += (ab & bc) ^ b;
  h += rotations(a, S::kBigA);
}

template <int Round, class Word>
[[gnu::always_inline]] inline void sha2Sixteen(Word (&v)[8], Word& ab, Word (&w)[16],
                                               const Word* constants, const std::uint8_t* block) {
  constexpr int kAt = Round & 15;
  if constexpr (Round < 16) {
    w[kAt] = loadWord<Word, std::endian::big>(block + sizeof(Word) * kAt);
  } else {
    w[kAt] += smallSigma(w[(kAt + 1) & 15], Sha2<Word>::kSmall0) + w[(kAt + 9) & 15] +
              smallSigma(w[(kAt + 14) & 15], Sha2<Word>::kSmall1);
  }
  sha2Round<Round>(v, ab, w[kAt] + constants[kAt]);
  if constexpr (kAt < 15) sha2Sixteen<Round + 1>(v, ab, w, constants, block);
}

template <class Word>
[[gnu::always_inline]] inline void sha2Blocks(Word* state, const std::uint8_t* blocks,
                                              std::size_t count) {
  const Word* const constants = Sha2<Word>::constants();
  Word v[8];
  for (int i = 0; i < 8; ++i) v[i] = state[i];
  for (; count > 0; --count, blocks += 16 * sizeof(Word)) {
    Word w[16];
    Word ab = v[1] ^ v[2];
    sha2Sixteen<0>(v, ab, w, constants, blocks);
    for (int round = 16; round < Sha2<Word>::kRounds; round += 16)
      sha2Sixteen<16>(v, ab, w, constants + round, blocks);
    for (int i = 0; i < 8; ++i) {
      v[i] += state[i];
      state[i] = v[i];
    }
  }
}

}  // namespace zantrel::sha

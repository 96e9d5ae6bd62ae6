// MD4 (RFC 1320).
//
// Three rounds of sixteen steps, each a chain of dependent operations: what bounds the speed is the
// way of the newest word b through a step. The functions are therefore written so that as little as
// possible follows it: the majority of round 2 is the sum of two terms that share no bit, of which
// one does not depend on b, and x + constant is added before b comes in.

#include "crypto/md4.h"

#include <bit>

namespace zantrel {
namespace {

using Word = std::uint32_t;

// Message words and rotations of the steps (RFC 1320, section 3.4).
constexpr int kIndex[48] = {0, 1, 2, 3,  4, 5,  6, 7,  8, 9, 10, 11, 12, 13, 14, 15,
                            0, 4, 8, 12, 1, 5,  9, 13, 2, 6, 10, 14, 3,  7,  11, 15,
                            0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5,  13, 3,  11, 7,  15};
constexpr int kShift[3][4] = {{3, 7, 11, 19}, {3, 5, 9, 13}, {3, 9, 11, 15}};
constexpr Word kConstant[3] = {0, 0x5A827999, 0x6ED9EBA1};

template <int Step>
[[gnu::always_inline]] inline void step(Word (&v)[4], const std::uint8_t* block) {
  constexpr int kRound = Step / 16;
  Word& a = v[(48 - Step) & 3];
  const Word b = v[(49 - Step) & 3];
  const Word c = v[(50 - Step) & 3];
  const Word d = v[(51 - Step) & 3];
  a += loadWord<Word, std::endian::little>(block + 4 * kIndex[Step]) + kConstant[kRound];
  if constexpr (kRound == 0) {
    a += ((c ^ d) & b) ^ d;
  } else if constexpr (kRound == 1) {
    a += c & d;
    a += (c ^ d) & b;
  } else {
    a += (c ^ d) ^ b;
  }
  a = std::rotl(a, kShift[kRound][Step & 3]);
}

template <int Step = 0>
[[gnu::always_inline]] inline void steps(Word (&v)[4], const std::uint8_t* block) {
  step<Step>(v, block);
  if constexpr (Step < 47) steps<Step + 1>(v, block);
}

}  // namespace

void Md4State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  Word v[4] = {words_[0], words_[1], words_[2], words_[3]};
  for (; count > 0; --count, blocks += kBlockBytes) {
    const Word before[4] = {v[0], v[1], v[2], v[3]};
    steps(v, blocks);
    for (int i = 0; i < 4; ++i) v[i] += before[i];
  }
  for (std::size_t i = 0; i < 4; ++i) words_[i] = v[i];
}

}  // namespace zantrel

// SHA-512 on BMI2, and with the message schedule in vectors of two words (AVX-512VL has the 64-bit
// rotation and three-input logic that make it cheap). Two words need only words that lie before
// both (the nearest is two back), so nothing has to be split. While sixteen rounds use their words,
// which lie in memory with the constants added, those of the next sixteen are made.

#include "crypto/sha2_rounds.h"
#include "crypto/sha_kernels.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::sha {
namespace {

using Word = std::uint64_t;

#define ZT_AVX512_INLINE [[gnu::always_inline]] ZT_TARGET_AVX512 inline

constexpr int kXorOfThree = 0x96;

ZT_AVX512_INLINE __m128i smallSigma0(__m128i x) {
  return _mm_ternarylogic_epi64(_mm_ror_epi64(x, 1), _mm_ror_epi64(x, 8), _mm_srli_epi64(x, 7),
                                kXorOfThree);
}

ZT_AVX512_INLINE __m128i smallSigma1(__m128i x) {
  return _mm_ternarylogic_epi64(_mm_ror_epi64(x, 19), _mm_ror_epi64(x, 61), _mm_srli_epi64(x, 6),
                                kXorOfThree);
}

template <int Pair>
ZT_AVX512_INLINE void schedulePair(__m128i (&x)[8], Word* added, const Word* constants) {
  const __m128i second = _mm_alignr_epi8(x[(Pair + 1) & 7], x[Pair], 8);
  const __m128i tenth = _mm_alignr_epi8(x[(Pair + 5) & 7], x[(Pair + 4) & 7], 8);
  const __m128i sum = _mm_add_epi64(_mm_add_epi64(x[Pair], tenth), smallSigma0(second));
  x[Pair] = _mm_add_epi64(sum, smallSigma1(x[(Pair + 7) & 7]));
  const __m128i constant = _mm_load_si128(reinterpret_cast<const __m128i*>(constants) + Pair);
  _mm_store_si128(reinterpret_cast<__m128i*>(added) + Pair, _mm_add_epi64(x[Pair], constant));
}

template <bool More, int Pair = 0>
ZT_AVX512_INLINE void sixteenRounds(Word (&v)[8], Word& ab, __m128i (&x)[8], Word* added,
                                    const Word* constants) {
  const Word first = added[2 * Pair];
  const Word second = added[2 * Pair + 1];
  if constexpr (More) schedulePair<Pair>(x, added, constants);
  sha2Round<2 * Pair, true>(v, ab, first);
  sha2Round<2 * Pair + 1, true>(v, ab, second);
  if constexpr (Pair < 7) sixteenRounds<More, Pair + 1>(v, ab, x, added, constants);
}

}  // namespace

ZT_TARGET_AVX2 void sha512Avx2(Word* state, const std::uint8_t* blocks,
                               std::size_t count) noexcept {
  sha2Blocks(state, blocks, count);
}

ZT_TARGET_AVX512 void sha512Avx512(Word* state, const std::uint8_t* blocks,
                                   std::size_t count) noexcept {
  const __m128i swapped = _mm_set_epi64x(0x08090A0B0C0D0E0F, 0x0001020304050607);
  alignas(16) Word added[16];
  Word v[8];
  for (int i = 0; i < 8; ++i) v[i] = state[i];
  for (; count > 0; --count, blocks += 128) {
    __m128i x[8];
    for (int i = 0; i < 8; ++i) {
      x[i] =
          _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + i), swapped);
      const __m128i constant = _mm_load_si128(reinterpret_cast<const __m128i*>(kRound512) + i);
      _mm_store_si128(reinterpret_cast<__m128i*>(added) + i, _mm_add_epi64(x[i], constant));
    }
    Word ab = v[1] ^ v[2];
    for (int round = 16; round < 80; round += 16)
      sixteenRounds<true>(v, ab, x, added, kRound512 + round);
    sixteenRounds<false>(v, ab, x, added, nullptr);
    for (int i = 0; i < 8; ++i) {
      v[i] += state[i];
      state[i] = v[i];
    }
  }
}

}  // namespace zantrel::sha

#endif

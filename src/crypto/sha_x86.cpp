// SHA-1 and SHA-256 on the SHA instructions, and the plain steps compiled with BMI2. The
// instructions are bound by the latency of one chain of sha1rnds4 or sha256rnds2; the message
// schedule fits beside it.

#include "crypto/sha1_rounds.h"
#include "crypto/sha2_rounds.h"
#include "crypto/sha_kernels.h"

#if defined(ZT_X86_64)

#include <utility>

#include "platform/x86_intrinsics.h"

namespace zantrel::sha {
namespace {

#define ZT_SHA_INLINE [[gnu::always_inline]] ZT_TARGET_SHA inline

ZT_SHA_INLINE __m128i load(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

ZT_SHA_INLINE void store(__m128i value, void* to) {
  _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

// Four words of the message: byte-swapped on the way in, then by the schedule of FIPS 180-4,
// section 6.1.2. SHA-1 keeps the first word in the highest lane.
template <int Group>
ZT_SHA_INLINE __m128i sha1Words(__m128i (&w)[4], const std::uint8_t* block) {
  __m128i& words = w[Group & 3];
  if constexpr (Group < 4) {
    const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    words = _mm_shuffle_epi8(load(block + 16 * Group), reversed);
  } else {
    words = _mm_xor_si128(_mm_sha1msg1_epu32(words, w[(Group + 1) & 3]), w[(Group + 2) & 3]);
    words = _mm_sha1msg2_epu32(words, w[(Group + 3) & 3]);
  }
  return words;
}

template <int Group = 0>
ZT_SHA_INLINE void sha1Groups(__m128i& abcd, __m128i& e, __m128i (&w)[4],
                              const std::uint8_t* block) {
  const __m128i words = sha1Words<Group>(w, block);
  const __m128i added = Group == 0 ? _mm_add_epi32(e, words) : _mm_sha1nexte_epu32(e, words);
  e = abcd;
  abcd = _mm_sha1rnds4_epu32(abcd, added, Group / 5);
  if constexpr (Group < 19) sha1Groups<Group + 1>(abcd, e, w, block);
}

// The same for SHA-256, section 6.2.2; the first word is in the lowest lane.
template <int Group>
ZT_SHA_INLINE __m128i sha256Words(__m128i (&w)[4], const std::uint8_t* block) {
  __m128i& words = w[Group & 3];
  if constexpr (Group < 4) {
    const __m128i swapped = _mm_set_epi64x(0x0C0D0E0F08090A0B, 0x0405060700010203);
    words = _mm_shuffle_epi8(load(block + 16 * Group), swapped);
  } else {
    const __m128i last = w[(Group + 3) & 3];
    words = _mm_add_epi32(_mm_sha256msg1_epu32(words, w[(Group + 1) & 3]),
                          _mm_alignr_epi8(last, w[(Group + 2) & 3], 4));
    words = _mm_sha256msg2_epu32(words, last);
  }
  return words;
}

// `added` holds the words of this group with their constants; the next ones are made between the
// two halves, so that they never wait for the chain.
template <int Group = 0>
ZT_SHA_INLINE void sha256Groups(__m128i& abef, __m128i& cdgh, __m128i (&w)[4], __m128i added,
                                const std::uint32_t* constants, const std::uint8_t* block) {
  cdgh = _mm_sha256rnds2_epu32(cdgh, abef, added);
  const __m128i second = _mm_shuffle_epi32(added, 0x0E);
  if constexpr (Group < 15)
    added = _mm_add_epi32(sha256Words<Group + 1>(w, block), load(constants + 4 * (Group + 1)));
  abef = _mm_sha256rnds2_epu32(abef, cdgh, second);
  if constexpr (Group < 15) sha256Groups<Group + 1>(abef, cdgh, w, added, constants, block);
}

}  // namespace

ZT_TARGET_SHA void sha1ShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count,
                             const std::uint8_t* last, std::size_t lastCount) noexcept {
  __m128i abcd = _mm_shuffle_epi32(load(state), 0x1B);
  __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
  for (;; blocks += 64) {
    if (count == 0) {
      if (lastCount == 0) break;
      blocks = last;
      count = std::exchange(lastCount, 0);
    }
    --count;
    const __m128i abcdBefore = abcd;
    const __m128i eBefore = e;
    __m128i w[4];
    sha1Groups(abcd, e, w, blocks);
    e = _mm_sha1nexte_epu32(e, eBefore);
    abcd = _mm_add_epi32(abcd, abcdBefore);
  }
  store(_mm_shuffle_epi32(abcd, 0x1B), state);
  state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
}

ZT_TARGET_SHA void sha256ShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count,
                               const std::uint8_t* last, std::size_t lastCount) noexcept {
  // The instructions want the words a b e f and c d g h side by side, the first in the top lane.
  const __m128i badc = _mm_shuffle_epi32(load(state), 0xB1);
  const __m128i hgfe = _mm_shuffle_epi32(load(state + 4), 0x1B);
  __m128i abef = _mm_alignr_epi8(badc, hgfe, 8);
  __m128i cdgh = _mm_blend_epi16(hgfe, badc, 0xF0);
  for (;; blocks += 64) {
    if (count == 0) {
      if (lastCount == 0) break;
      blocks = last;
      count = std::exchange(lastCount, 0);
    }
    --count;
    const __m128i abefBefore = abef;
    const __m128i cdghBefore = cdgh;
    __m128i w[4];
    // The compiler must not keep 64 constants in registers that it has not: it would spill them.
    const std::uint32_t* constants = kRound256;
    __asm__("" : "+r"(constants));
    const __m128i added = _mm_add_epi32(sha256Words<0>(w, blocks), load(constants));
    sha256Groups(abef, cdgh, w, added, constants, blocks);
    abef = _mm_add_epi32(abef, abefBefore);
    cdgh = _mm_add_epi32(cdgh, cdghBefore);
  }
  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  store(_mm_blend_epi16(feba, dchg, 0xF0), state);
  store(_mm_alignr_epi8(dchg, feba, 8), state + 4);
}

ZT_TARGET_AVX2 void sha1Avx2(std::uint32_t* state, const std::uint8_t* blocks,
                             std::size_t count) noexcept {
  sha1Blocks(state, blocks, count);
}

ZT_TARGET_AVX2 void sha256Avx2(std::uint32_t* state, const std::uint8_t* blocks,
                               std::size_t count) noexcept {
  sha2Blocks(state, blocks, count);
}

}  // namespace zantrel::sha

#endif

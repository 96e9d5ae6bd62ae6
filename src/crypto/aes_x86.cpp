// AES on the processor's AES instructions.
//
// CBC encryption is one chain of `aesenc`; only its latency counts. The next plaintext and the
// first round key are added into the last round key, so that the chain has no other operation in
// it. Where blocks are independent, enough of them are in flight to start an instruction every half
// cycle: 8 registers of one block (AES-NI) or of four (VAES on 512 bits).

#include "crypto/aes_kernels.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

#define ZT_TARGET_AES __attribute__((target("aes,sse4.1")))
#define ZT_TARGET_VAES512 __attribute__((target("vaes,aes,avx512f,avx512bw,avx512dq,avx512vl")))

namespace zantrel::aes {

namespace {

constexpr std::size_t kLanes = 8;

ZT_TARGET_AES inline __m128i get(const std::uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

ZT_TARGET_AES inline void put(std::uint8_t* p, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), block);
}

ZT_TARGET_AES void prepare(Schedule& keys) {
  const std::size_t rounds = keys.rounds;
  put(keys.decrypt[0], get(keys.encrypt[rounds]));
  for (std::size_t i = 1; i < rounds; ++i)
    put(keys.decrypt[i], _mm_aesimc_si128(get(keys.encrypt[rounds - i])));
  put(keys.decrypt[rounds], get(keys.encrypt[0]));
}

// --- One block a register ---

enum class Way { encrypt, decrypt };

template <Way way>
ZT_TARGET_AES inline __m128i round(__m128i block, __m128i key) {
  return way == Way::encrypt ? _mm_aesenc_si128(block, key) : _mm_aesdec_si128(block, key);
}

template <Way way>
ZT_TARGET_AES inline __m128i lastRound(__m128i block, __m128i key) {
  return way == Way::encrypt ? _mm_aesenclast_si128(block, key) : _mm_aesdeclast_si128(block, key);
}

template <Way way, std::size_t N>
ZT_TARGET_AES inline void middleRounds(const std::uint8_t (*keys)[kBlockSize], std::size_t rounds,
                                       __m128i* blocks) {
  for (std::size_t n = 0; n < N; ++n) blocks[n] = _mm_xor_si128(blocks[n], get(keys[0]));
  for (std::size_t r = 1; r < rounds; ++r) {
    const __m128i key = get(keys[r]);
    for (std::size_t n = 0; n < N; ++n) blocks[n] = round<way>(blocks[n], key);
  }
}

template <Way way, std::size_t N>
ZT_TARGET_AES inline void ecbGroup(const std::uint8_t (*keys)[kBlockSize], std::size_t rounds,
                                   const std::uint8_t* in, std::uint8_t* out) {
  __m128i blocks[N];
  for (std::size_t n = 0; n < N; ++n) blocks[n] = get(in + n * kBlockSize);
  middleRounds<way, N>(keys, rounds, blocks);
  const __m128i last = get(keys[rounds]);
  for (std::size_t n = 0; n < N; ++n) put(out + n * kBlockSize, lastRound<way>(blocks[n], last));
}

template <Way way, std::size_t N>
ZT_TARGET_AES inline void ecbGroups(const std::uint8_t (*keys)[kBlockSize], std::size_t rounds,
                                    const std::uint8_t*& in, std::uint8_t*& out,
                                    std::size_t& blocks) {
  for (; blocks >= N; blocks -= N, in += N * kBlockSize, out += N * kBlockSize)
    ecbGroup<way, N>(keys, rounds, in, out);
}

// What is left of groups goes in halves, so that short texts run side by side too.
template <Way way>
ZT_TARGET_AES void ecb(const std::uint8_t (*keys)[kBlockSize], std::size_t rounds,
                       const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
  ecbGroups<way, kLanes>(keys, rounds, in, out, blocks);
  ecbGroups<way, 4>(keys, rounds, in, out, blocks);
  ecbGroups<way, 2>(keys, rounds, in, out, blocks);
  ecbGroups<way, 1>(keys, rounds, in, out, blocks);
}

void ecbEncrypt(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks) {
  ecb<Way::encrypt>(keys.encrypt, keys.rounds, in, out, blocks);
}

void ecbDecrypt(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks) {
  ecb<Way::decrypt>(keys.decrypt, keys.rounds, in, out, blocks);
}

// `Rounds` is a constant so that all round keys stay in registers.
template <std::size_t Rounds>
ZT_TARGET_AES void cbcEncryptRounds(const Schedule& keys, std::uint8_t* chain,
                                    const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
  __m128i key[Rounds + 1];
  for (std::size_t r = 0; r <= Rounds; ++r) key[r] = get(keys.encrypt[r]);
  const __m128i ends = _mm_xor_si128(key[0], key[Rounds]);
  // The state carries what the next block will add to it, except for the last block's.
  __m128i state = _mm_xor_si128(_mm_xor_si128(get(chain), get(in)), key[0]);
  for (; blocks > 1; --blocks, out += kBlockSize) {
    in += kBlockSize;
    const __m128i next = get(in);
    for (std::size_t r = 1; r < Rounds; ++r) state = _mm_aesenc_si128(state, key[r]);
    const __m128i joint = _mm_xor_si128(next, ends);
    state = _mm_aesenclast_si128(state, joint);
    put(out, _mm_xor_si128(state, _mm_xor_si128(next, key[0])));
  }
  for (std::size_t r = 1; r < Rounds; ++r) state = _mm_aesenc_si128(state, key[r]);
  state = _mm_aesenclast_si128(state, key[Rounds]);
  put(out, state);
  put(chain, state);
}

void cbcEncrypt(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
  if (blocks == 0) return;
  if (keys.rounds == 10) return cbcEncryptRounds<10>(keys, chain, in, out, blocks);
  if (keys.rounds == 12) return cbcEncryptRounds<12>(keys, chain, in, out, blocks);
  cbcEncryptRounds<14>(keys, chain, in, out, blocks);
}

// Written from the last block to the first: each reads the block before it from the input, which
// the output may lie over.
template <std::size_t N>
ZT_TARGET_AES inline __m128i cbcDecryptGroup(const Schedule& keys, __m128i previous,
                                             const std::uint8_t* in, std::uint8_t* out) {
  __m128i blocks[N];
  for (std::size_t n = 0; n < N; ++n) blocks[n] = get(in + n * kBlockSize);
  const __m128i next = blocks[N - 1];
  middleRounds<Way::decrypt, N>(keys.decrypt, keys.rounds, blocks);
  const __m128i last = get(keys.decrypt[keys.rounds]);
  for (std::size_t n = N; n-- > 0;) {
    const __m128i before = n == 0 ? previous : get(in + (n - 1) * kBlockSize);
    put(out + n * kBlockSize, _mm_aesdeclast_si128(blocks[n], _mm_xor_si128(last, before)));
  }
  return next;
}

template <std::size_t N>
ZT_TARGET_AES inline void cbcDecryptGroups(const Schedule& keys, __m128i& previous,
                                           const std::uint8_t*& in, std::uint8_t*& out,
                                           std::size_t& blocks) {
  for (; blocks >= N; blocks -= N, in += N * kBlockSize, out += N * kBlockSize)
    previous = cbcDecryptGroup<N>(keys, previous, in, out);
}

ZT_TARGET_AES void cbcDecrypt(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                              std::uint8_t* out, std::size_t blocks) {
  __m128i previous = get(chain);
  cbcDecryptGroups<kLanes>(keys, previous, in, out, blocks);
  cbcDecryptGroups<4>(keys, previous, in, out, blocks);
  cbcDecryptGroups<2>(keys, previous, in, out, blocks);
  cbcDecryptGroups<1>(keys, previous, in, out, blocks);
  put(chain, previous);
}

// --- Four blocks a register ---

constexpr std::size_t kWideBlocks = 4;
constexpr std::size_t kWideGroup = kLanes * kWideBlocks;
constexpr std::size_t kWideSize = kWideBlocks * kBlockSize;

ZT_TARGET_VAES512 inline __m512i getWide(const std::uint8_t* p) {
  return _mm512_loadu_si512(p);
}

ZT_TARGET_VAES512 inline __m512i fourTimes(const std::uint8_t* key) {
  return _mm512_broadcast_i32x4(_mm_load_si128(reinterpret_cast<const __m128i*>(key)));
}

template <Way way>
ZT_TARGET_VAES512 inline __m512i wideRound(__m512i blocks, __m512i key) {
  return way == Way::encrypt ? _mm512_aesenc_epi128(blocks, key)
                             : _mm512_aesdec_epi128(blocks, key);
}

template <Way way>
ZT_TARGET_VAES512 inline __m512i wideLastRound(__m512i blocks, __m512i key) {
  return way == Way::encrypt ? _mm512_aesenclast_epi128(blocks, key)
                             : _mm512_aesdeclast_epi128(blocks, key);
}

template <Way way>
ZT_TARGET_VAES512 inline void wideMiddleRounds(const __m512i* key, std::size_t rounds,
                                               __m512i* blocks) {
  for (std::size_t n = 0; n < kLanes; ++n) blocks[n] = _mm512_xor_si512(blocks[n], key[0]);
  for (std::size_t r = 1; r < rounds; ++r)
    for (std::size_t n = 0; n < kLanes; ++n) blocks[n] = wideRound<way>(blocks[n], key[r]);
}

// Returns how many blocks it did: all whole groups.
template <Way way, std::size_t Rounds>
ZT_TARGET_VAES512 std::size_t ecbWide(const std::uint8_t (*keys)[kBlockSize],
                                      const std::uint8_t* in, std::uint8_t* out,
                                      std::size_t blocks) {
  __m512i key[Rounds + 1];
  for (std::size_t r = 0; r <= Rounds; ++r) key[r] = fourTimes(keys[r]);
  std::size_t done = 0;
  for (; blocks - done >= kWideGroup; done += kWideGroup) {
    __m512i group[kLanes];
    for (std::size_t n = 0; n < kLanes; ++n) group[n] = getWide(in + n * kWideSize);
    wideMiddleRounds<way>(key, Rounds, group);
    for (std::size_t n = 0; n < kLanes; ++n)
      _mm512_storeu_si512(out + n * kWideSize, wideLastRound<way>(group[n], key[Rounds]));
    in += kLanes * kWideSize;
    out += kLanes * kWideSize;
  }
  return done;
}

template <std::size_t Rounds>
ZT_TARGET_VAES512 std::size_t cbcDecryptWide(const Schedule& keys, std::uint8_t* chain,
                                             const std::uint8_t* in, std::uint8_t* out,
                                             std::size_t blocks) {
  __m512i key[Rounds + 1];
  for (std::size_t r = 0; r <= Rounds; ++r) key[r] = fourTimes(keys.decrypt[r]);
  __m512i previous = _mm512_broadcast_i32x4(get(chain));  // only its last block matters
  std::size_t done = 0;
  for (; blocks - done >= kWideGroup; done += kWideGroup) {
    __m512i group[kLanes];
    __m512i ends[kLanes];
    for (std::size_t n = 0; n < kLanes; ++n) {
      group[n] = getWide(in + n * kWideSize);
      const __m512i before = _mm512_alignr_epi64(group[n], previous, 6);
      ends[n] = _mm512_xor_si512(before, key[Rounds]);
      previous = group[n];
    }
    wideMiddleRounds<Way::decrypt>(key, Rounds, group);
    for (std::size_t n = 0; n < kLanes; ++n)
      _mm512_storeu_si512(out + n * kWideSize, _mm512_aesdeclast_epi128(group[n], ends[n]));
    in += kLanes * kWideSize;
    out += kLanes * kWideSize;
  }
  put(chain, _mm512_extracti32x4_epi32(previous, 3));
  return done;
}

template <Way way>
std::size_t ecbWideAnyKey(const std::uint8_t (*keys)[kBlockSize], std::size_t rounds,
                          const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
  if (rounds == 10) return ecbWide<way, 10>(keys, in, out, blocks);
  if (rounds == 12) return ecbWide<way, 12>(keys, in, out, blocks);
  return ecbWide<way, 14>(keys, in, out, blocks);
}

void ecbEncryptWide(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                    std::size_t blocks) {
  if (blocks < kWideGroup) return ecbEncrypt(keys, in, out, blocks);
  const std::size_t done = ecbWideAnyKey<Way::encrypt>(keys.encrypt, keys.rounds, in, out, blocks);
  ecbEncrypt(keys, in + done * kBlockSize, out + done * kBlockSize, blocks - done);
}

void ecbDecryptWide(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                    std::size_t blocks) {
  if (blocks < kWideGroup) return ecbDecrypt(keys, in, out, blocks);
  const std::size_t done = ecbWideAnyKey<Way::decrypt>(keys.decrypt, keys.rounds, in, out, blocks);
  ecbDecrypt(keys, in + done * kBlockSize, out + done * kBlockSize, blocks - done);
}

void cbcDecryptWideAnyKey(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                          std::uint8_t* out, std::size_t blocks) {
  if (blocks < kWideGroup) return cbcDecrypt(keys, chain, in, out, blocks);
  const auto wide = keys.rounds == 10   ? cbcDecryptWide<10>
                    : keys.rounds == 12 ? cbcDecryptWide<12>
                                        : cbcDecryptWide<14>;
  const std::size_t done = wide(keys, chain, in, out, blocks);
  cbcDecrypt(keys, chain, in + done * kBlockSize, out + done * kBlockSize, blocks - done);
}

}  // namespace

const Kernels kAesNi = {prepare, ecbEncrypt, ecbDecrypt, cbcEncrypt, cbcDecrypt};
const Kernels kVaes512 = {prepare, ecbEncryptWide, ecbDecryptWide, cbcEncrypt,
                          cbcDecryptWideAnyKey};

}  // namespace zantrel::aes

#endif

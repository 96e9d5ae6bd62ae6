// AES in constant time on any processor: no table look-up and no branch depends on key or data.
//
// Bit slicing: four blocks at a time are turned into eight 64-bit planes, plane b holding bit b of
// all 64 bytes. SubBytes is then a circuit of logic operations on planes: the one of Boyar and
// Peralta, "A small depth-16 circuit for the AES S-box" (2012). The inverse S-box is the same
// circuit between two inverse affine maps. Inside a plane, bit 32*h + 8*r + 4*k + c belongs to row
// r and column c of block 2*h + k, so ShiftRows rotates nibbles and MixColumns rotates bytes. The
// layout costs CBC encryption, which has one block at a time, three quarters of the work.

#include <array>
#include <bit>
#include <cstring>

#include "core/byte_order.h"
#include "crypto/aes_kernels.h"
#include "platform/secure_wipe.h"

namespace zantrel::aes {

namespace {

constexpr std::size_t kLanes = 4;
using Planes = std::array<std::uint64_t, 8>;

// Exchanges the bits of `high` under `mask` with those of `low` that stand `shift` above.
inline void exchange(std::uint64_t& low, std::uint64_t& high, std::uint64_t mask, int shift) {
  const std::uint64_t difference = ((low >> shift) ^ high) & mask;
  high ^= difference;
  low ^= difference << shift;
}

// Between words of bytes and planes; its own inverse.
inline void transpose(Planes& w) {
  for (std::size_t i = 0; i < 8; i += 2) exchange(w[i], w[i + 1], 0x5555555555555555, 1);
  for (const std::size_t i : {0U, 1U, 4U, 5U}) exchange(w[i], w[i + 2], 0x3333333333333333, 2);
  for (std::size_t i = 0; i < 4; ++i) exchange(w[i], w[i + 4], 0x0F0F0F0F0F0F0F0F, 4);
}

inline void load(const std::uint8_t* in, Planes& w) {
  constexpr auto little = std::endian::little;
  for (std::size_t i = 0; i < 8; ++i) {
    const std::uint8_t* const column = in + 16 * (i / 4) + 4 * (i % 4);
    w[i] = loadWord<std::uint32_t, little>(column) |
           std::uint64_t{loadWord<std::uint32_t, little>(column + 32)} << 32;
  }
  transpose(w);
}

inline void store(Planes& w, std::uint8_t* out) {
  constexpr auto little = std::endian::little;
  transpose(w);
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint8_t* const column = out + 16 * (i / 4) + 4 * (i % 4);
    storeWord<little>(static_cast<std::uint32_t>(w[i]), column);
    storeWord<little>(static_cast<std::uint32_t>(w[i] >> 32), column + 32);
  }
}

inline void addKey(Planes& w, const std::uint64_t* key) {
  for (std::size_t i = 0; i < 8; ++i) w[i] ^= key[i];
}

// The names of the signals are those of the published circuit; x0 is the highest bit.
inline void substitute(Planes& w) {
  const std::uint64_t x0 = w[7], x1 = w[6], x2 = w[5], x3 = w[4];
  const std::uint64_t x4 = w[3], x5 = w[2], x6 = w[1], x7 = w[0];

  const std::uint64_t y14 = x3 ^ x5, y13 = x0 ^ x6, y9 = x0 ^ x3, y8 = x0 ^ x5;
  const std::uint64_t t0 = x1 ^ x2, y1 = t0 ^ x7, y4 = y1 ^ x3, y12 = y13 ^ y14;
  const std::uint64_t y2 = y1 ^ x0, y5 = y1 ^ x6, y3 = y5 ^ y8, t1 = x4 ^ y12;
  const std::uint64_t y15 = t1 ^ x5, y20 = t1 ^ x1, y6 = y15 ^ x7, y10 = y15 ^ t0;
  const std::uint64_t y11 = y20 ^ y9, y7 = x7 ^ y11, y17 = y10 ^ y11, y19 = y10 ^ y8;
  const std::uint64_t y16 = t0 ^ y11, y21 = y13 ^ y16, y18 = x0 ^ y16;

  const std::uint64_t t2 = y12 & y15, t4 = (y3 & y6) ^ t2, t6 = (y4 & x7) ^ t2;
  const std::uint64_t t7 = y13 & y16, t9 = (y5 & y1) ^ t7, t11 = (y2 & y7) ^ t7;
  const std::uint64_t t12 = y9 & y11, t14 = (y14 & y17) ^ t12, t16 = (y8 & y10) ^ t12;
  const std::uint64_t t21 = t4 ^ t14 ^ y20, t22 = t6 ^ t16 ^ y19;
  const std::uint64_t t23 = t9 ^ t14 ^ y21, t24 = t11 ^ t16 ^ y18;

  const std::uint64_t t25 = t21 ^ t22, t26 = t21 & t23, t27 = t24 ^ t26;
  const std::uint64_t t29 = (t25 & t27) ^ t22, t30 = t23 ^ t24, t31 = t22 ^ t26;
  const std::uint64_t t33 = (t31 & t30) ^ t24, t34 = t23 ^ t33, t35 = t27 ^ t33;
  const std::uint64_t t36 = t24 & t35, t37 = t36 ^ t34, t38 = t27 ^ t36;
  const std::uint64_t t40 = t25 ^ (t29 & t38), t41 = t40 ^ t37, t42 = t29 ^ t33;
  const std::uint64_t t43 = t29 ^ t40, t44 = t33 ^ t37, t45 = t42 ^ t41;

  const std::uint64_t z0 = t44 & y15, z1 = t37 & y6, z2 = t33 & x7, z3 = t43 & y16;
  const std::uint64_t z4 = t40 & y1, z5 = t29 & y7, z6 = t42 & y11, z7 = t45 & y17;
  const std::uint64_t z8 = t41 & y10, z9 = t44 & y12, z10 = t37 & y3, z11 = t33 & y4;
  const std::uint64_t z12 = t43 & y13, z13 = t40 & y5, z14 = t29 & y2, z15 = t42 & y9;
  const std::uint64_t z16 = t45 & y14, z17 = t41 & y8;

  const std::uint64_t t46 = z15 ^ z16, t47 = z10 ^ z11, t48 = z5 ^ z13, t49 = z9 ^ z10;
  const std::uint64_t t50 = z2 ^ z12, t51 = z2 ^ z5, t52 = z7 ^ z8, t53 = z0 ^ z3;
  const std::uint64_t t54 = z6 ^ z7, t55 = z16 ^ z17, t56 = z12 ^ t48, t57 = t50 ^ t53;
  const std::uint64_t t58 = z4 ^ t46, t59 = z3 ^ t54, t60 = t46 ^ t57, t61 = z14 ^ t57;
  const std::uint64_t t62 = t52 ^ t58, t63 = t49 ^ t58, t64 = z4 ^ t59, t65 = t61 ^ t62;
  const std::uint64_t t66 = z1 ^ t63, t67 = t64 ^ t65, s3 = t53 ^ t66;

  w = {t48 ^ ~t60, t56 ^ ~t62, t47 ^ t65, t51 ^ t66, s3, t55 ^ ~t67, t64 ^ ~s3, t59 ^ t63};
}

// The inverse of the S-box's affine map: takes 0x63 away, then bit i is the sum of bits i+2, i+5
// and i+7.
inline void unmap(Planes& w) {
  w = {w[0] ^ ~0ULL, w[1] ^ ~0ULL, w[2], w[3], w[4], w[5] ^ ~0ULL, w[6] ^ ~0ULL, w[7]};
  Planes sum;
  for (std::size_t i = 0; i < 8; ++i) sum[i] = w[(i + 2) % 8] ^ w[(i + 5) % 8] ^ w[(i + 7) % 8];
  w = sum;
}

inline void unsubstitute(Planes& w) {
  unmap(w);
  substitute(w);
  unmap(w);
}

inline void shiftRows(Planes& w) {
  for (std::uint64_t& x : w) {
    x = (x & 0x000000FF000000FF) | ((x >> 1) & 0x0000770000007700) |
        ((x << 3) & 0x0000880000008800) | ((x >> 2) & 0x0033000000330000) |
        ((x << 2) & 0x00CC000000CC0000) | ((x >> 3) & 0x1100000011000000) |
        ((x << 1) & 0xEE000000EE000000);
  }
}

inline void unshiftRows(Planes& w) {
  for (std::uint64_t& x : w) {
    x = (x & 0x000000FF000000FF) | ((x << 1) & 0x0000EE000000EE00) |
        ((x >> 3) & 0x0000110000001100) | ((x >> 2) & 0x0033000000330000) |
        ((x << 2) & 0x00CC000000CC0000) | ((x << 3) & 0x8800000088000000) |
        ((x >> 1) & 0x7700000077000000);
  }
}

// The bytes one and two rows below.
inline std::uint64_t below(std::uint64_t x) {
  return ((x >> 8) & 0x00FFFFFF00FFFFFF) | ((x << 24) & 0xFF000000FF000000);
}
inline std::uint64_t twoBelow(std::uint64_t x) {
  return ((x >> 16) & 0x0000FFFF0000FFFF) | ((x << 16) & 0xFFFF0000FFFF0000);
}

// All bytes times x in GF(2^8).
inline Planes doubled(const Planes& w) {
  return {w[7], w[0] ^ w[7], w[1], w[2] ^ w[7], w[3] ^ w[7], w[4], w[5], w[6]};
}

inline void mixColumns(Planes& w) {
  Planes pair;
  for (std::size_t i = 0; i < 8; ++i) pair[i] = w[i] ^ below(w[i]);
  const Planes twice = doubled(pair);
  for (std::size_t i = 0; i < 8; ++i) w[i] = twice[i] ^ below(w[i]) ^ twoBelow(pair[i]);
}

// The inverse matrix is (5 0 4 0) times the one of MixColumns.
inline void unmixColumns(Planes& w) {
  Planes pair;
  for (std::size_t i = 0; i < 8; ++i) pair[i] = w[i] ^ twoBelow(w[i]);
  const Planes fourTimes = doubled(doubled(pair));
  for (std::size_t i = 0; i < 8; ++i) w[i] ^= fourTimes[i];
  mixColumns(w);
}

void encrypt(const Schedule& keys, Planes& w) {
  addKey(w, keys.planes[0]);
  for (std::size_t round = 1; round < keys.rounds; ++round) {
    substitute(w);
    shiftRows(w);
    mixColumns(w);
    addKey(w, keys.planes[round]);
  }
  substitute(w);
  shiftRows(w);
  addKey(w, keys.planes[keys.rounds]);
}

void decrypt(const Schedule& keys, Planes& w) {
  addKey(w, keys.planes[keys.rounds]);
  for (std::size_t round = keys.rounds - 1; round > 0; --round) {
    unshiftRows(w);
    unsubstitute(w);
    addKey(w, keys.planes[round]);
    unmixColumns(w);
  }
  unshiftRows(w);
  unsubstitute(w);
  addKey(w, keys.planes[0]);
}

void prepare(Schedule& keys) {
  for (std::size_t round = 0; round <= keys.rounds; ++round) {
    std::uint8_t copies[kLanes * kBlockSize];
    for (std::size_t i = 0; i < kLanes; ++i)
      std::memcpy(copies + i * kBlockSize, keys.encrypt[round], kBlockSize);
    Planes planes;
    load(copies, planes);
    std::memcpy(keys.planes[round], planes.data(), sizeof planes);
    secureWipe(copies, sizeof copies);
    secureWipe(planes.data(), sizeof planes);
  }
}

// Up to four blocks; `in` and `out` may be the same.
using Transform = void (*)(const Schedule& keys, Planes& w);

void runGroup(const Schedule& keys, Transform transform, const std::uint8_t* in, std::uint8_t* out,
              std::size_t blocks) {
  std::uint8_t group[kLanes * kBlockSize] = {};
  std::memcpy(group, in, blocks * kBlockSize);
  Planes planes;
  load(group, planes);
  transform(keys, planes);
  store(planes, group);
  std::memcpy(out, group, blocks * kBlockSize);
}

void ecb(const Schedule& keys, Transform transform, const std::uint8_t* in, std::uint8_t* out,
         std::size_t blocks) {
  while (blocks > 0) {
    const std::size_t count = blocks < kLanes ? blocks : kLanes;
    runGroup(keys, transform, in, out, count);
    in += count * kBlockSize;
    out += count * kBlockSize;
    blocks -= count;
  }
}

void ecbEncrypt(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks) {
  ecb(keys, encrypt, in, out, blocks);
}

void ecbDecrypt(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks) {
  ecb(keys, decrypt, in, out, blocks);
}

void cbcEncrypt(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
  for (; blocks > 0; --blocks, in += kBlockSize, out += kBlockSize) {
    for (std::size_t i = 0; i < kBlockSize; ++i)
      chain[i] = static_cast<std::uint8_t>(chain[i] ^ in[i]);
    runGroup(keys, encrypt, chain, chain, 1);
    std::memcpy(out, chain, kBlockSize);
  }
}

void cbcDecrypt(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
  while (blocks > 0) {
    const std::size_t size = (blocks < kLanes ? blocks : kLanes) * kBlockSize;
    std::uint8_t
        before[(kLanes + 1) * kBlockSize];  // each block's predecessor, then the last block
    std::memcpy(before, chain, kBlockSize);
    std::memcpy(before + kBlockSize, in, size);
    runGroup(keys, decrypt, in, out, size / kBlockSize);
    for (std::size_t i = 0; i < size; ++i) out[i] = static_cast<std::uint8_t>(out[i] ^ before[i]);
    std::memcpy(chain, before + size, kBlockSize);
    in += size;
    out += size;
    blocks -= size / kBlockSize;
  }
}

}  // namespace

const Kernels kBitSliced = {prepare, ecbEncrypt, ecbDecrypt, cbcEncrypt, cbcDecrypt};

std::uint32_t substituteWord(std::uint32_t word) noexcept {
  Planes planes{word};  // column 0 of block 0
  transpose(planes);
  substitute(planes);
  transpose(planes);
  const auto result = static_cast<std::uint32_t>(planes[0]);
  secureWipe(planes.data(), sizeof planes);
  return result;
}

}  // namespace zantrel::aes

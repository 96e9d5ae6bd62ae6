// DES and triple DES after FIPS 46-3.
//
// Each S-box is joined with the permutation P behind it: a table of 64 words that are already in
// place (computed by the compiler from the standard's tables). Both halves are kept rotated left by
// one bit, so that the six input bits of every other S-box lie inside a byte; those of the rest do
// after a rotation by four. The expansion E needs nothing else. The initial and the final
// permutation are five exchanges of bit groups each, and between the three passes of triple DES
// they cancel out.

#include "crypto/des.h"

#include <cstring>
#include <utility>

#include "crypto/block_modes_impl.h"
#include "platform/secure_wipe.h"

namespace zantrel {

namespace des {

namespace {

constexpr std::uint8_t kBoxes[8][4][16] = {
    {{14, 4, 13, 1, 2, 15, 11, 8, 3, 10, 6, 12, 5, 9, 0, 7},
     {0, 15, 7, 4, 14, 2, 13, 1, 10, 6, 12, 11, 9, 5, 3, 8},
     {4, 1, 14, 8, 13, 6, 2, 11, 15, 12, 9, 7, 3, 10, 5, 0},
     {15, 12, 8, 2, 4, 9, 1, 7, 5, 11, 3, 14, 10, 0, 6, 13}},
    {{15, 1, 8, 14, 6, 11, 3, 4, 9, 7, 2, 13, 12, 0, 5, 10},
     {3, 13, 4, 7, 15, 2, 8, 14, 12, 0, 1, 10, 6, 9, 11, 5},
     {0, 14, 7, 11, 10, 4, 13, 1, 5, 8, 12, 6, 9, 3, 2, 15},
     {13, 8, 10, 1, 3, 15, 4, 2, 11, 6, 7, 12, 0, 5, 14, 9}},
    {{10, 0, 9, 14, 6, 3, 15, 5, 1, 13, 12, 7, 11, 4, 2, 8},
     {13, 7, 0, 9, 3, 4, 6, 10, 2, 8, 5, 14, 12, 11, 15, 1},
     {13, 6, 4, 9, 8, 15, 3, 0, 11, 1, 2, 12, 5, 10, 14, 7},
     {1, 10, 13, 0, 6, 9, 8, 7, 4, 15, 14, 3, 11, 5, 2, 12}},
    {{7, 13, 14, 3, 0, 6, 9, 10, 1, 2, 8, 5, 11, 12, 4, 15},
     {13, 8, 11, 5, 6, 15, 0, 3, 4, 7, 2, 12, 1, 10, 14, 9},
     {10, 6, 9, 0, 12, 11, 7, 13, 15, 1, 3, 14, 5, 2, 8, 4},
     {3, 15, 0, 6, 10, 1, 13, 8, 9, 4, 5, 11, 12, 7, 2, 14}},
    {{2, 12, 4, 1, 7, 10, 11, 6, 8, 5, 3, 15, 13, 0, 14, 9},
     {14, 11, 2, 12, 4, 7, 13, 1, 5, 0, 15, 10, 3, 9, 8, 6},
     {4, 2, 1, 11, 10, 13, 7, 8, 15, 9, 12, 5, 6, 3, 0, 14},
     {11, 8, 12, 7, 1, 14, 2, 13, 6, 15, 0, 9, 10, 4, 5, 3}},
    {{12, 1, 10, 15, 9, 2, 6, 8, 0, 13, 3, 4, 14, 7, 5, 11},
     {10, 15, 4, 2, 7, 12, 9, 5, 6, 1, 13, 14, 0, 11, 3, 8},
     {9, 14, 15, 5, 2, 8, 12, 3, 7, 0, 4, 10, 1, 13, 11, 6},
     {4, 3, 2, 12, 9, 5, 15, 10, 11, 14, 1, 7, 6, 0, 8, 13}},
    {{4, 11, 2, 14, 15, 0, 8, 13, 3, 12, 9, 7, 5, 10, 6, 1},
     {13, 0, 11, 7, 4, 9, 1, 10, 14, 3, 5, 12, 2, 15, 8, 6},
     {1, 4, 11, 13, 12, 3, 7, 14, 10, 15, 6, 8, 0, 5, 9, 2},
     {6, 11, 13, 8, 1, 4, 10, 7, 9, 5, 0, 15, 14, 2, 3, 12}},
    {{13, 2, 8, 4, 6, 15, 11, 1, 10, 9, 3, 14, 5, 0, 12, 7},
     {1, 15, 13, 8, 10, 3, 7, 4, 12, 5, 6, 11, 0, 14, 9, 2},
     {7, 11, 4, 1, 9, 12, 14, 2, 0, 6, 10, 13, 15, 3, 5, 8},
     {2, 1, 14, 7, 4, 10, 8, 13, 15, 12, 9, 0, 3, 5, 6, 11}}};

// Bits are numbered from 1, the highest, as in the standard.
constexpr std::uint8_t kPermutation[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23,
                                           26, 5, 18, 31, 10, 2,  8,  24, 14, 32, 27,
                                           3,  9, 19, 13, 30, 6,  22, 11, 4,  25};
constexpr std::uint8_t kChoice1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18,
                                       10, 2,  59, 51, 43, 35, 27, 19, 11, 3,  60, 52, 44, 36,
                                       63, 55, 47, 39, 31, 23, 15, 7,  62, 54, 46, 38, 30, 22,
                                       14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr std::uint8_t kChoice2[48] = {
    14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,  26, 8,  16, 7,  27, 20, 13, 2,
    41, 52, 31, 37, 47, 55, 30, 40, 51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr std::uint8_t kRotations[16] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

using Tables = std::array<std::array<std::uint32_t, 64>, 8>;

constexpr Tables makeTables() {
  Tables tables{};
  for (std::size_t box = 0; box < 8; ++box) {
    for (std::size_t in = 0; in < 64; ++in) {
      const std::size_t row = ((in >> 4) & 2) | (in & 1);
      const std::uint32_t value = std::uint32_t{kBoxes[box][row][(in >> 1) & 15]} << (28 - 4 * box);
      std::uint32_t permuted = 0;
      for (const std::uint8_t from : kPermutation)
        permuted = (permuted << 1) | ((value >> (32 - from)) & 1);
      tables[box][in] = std::rotl(permuted, 1);
    }
  }
  return tables;
}

alignas(64) constexpr Tables kTables = makeTables();

inline std::uint32_t mix(std::uint32_t half, const std::uint32_t* key) noexcept {
  const std::uint32_t odd = std::rotr(half, 4) ^ key[0];
  const std::uint32_t even = half ^ key[1];
  return (kTables[0][(odd >> 24) & 63] ^ kTables[2][(odd >> 16) & 63]) ^
         (kTables[4][(odd >> 8) & 63] ^ kTables[6][odd & 63]) ^
         (kTables[1][(even >> 24) & 63] ^ kTables[3][(even >> 16) & 63]) ^
         (kTables[5][(even >> 8) & 63] ^ kTables[7][even & 63]);
}

inline void exchange(std::uint32_t& a, std::uint32_t& b, int shift, std::uint32_t mask) noexcept {
  const std::uint32_t difference = ((a >> shift) ^ b) & mask;
  b ^= difference;
  a ^= difference << shift;
}

// The initial permutation, and the rotation of both halves.
inline void enter(Block& block) noexcept {
  auto& [left, right] = block;
  exchange(left, right, 4, 0x0F0F0F0F);
  exchange(left, right, 16, 0x0000FFFF);
  exchange(right, left, 2, 0x33333333);
  exchange(right, left, 8, 0x00FF00FF);
  right = std::rotl(right, 1);
  exchange(left, right, 0, 0xAAAAAAAA);
  left = std::rotl(left, 1);
}

inline void leave(Block& block) noexcept {
  auto& [right, left] = block;  // the halves come out exchanged
  left = std::rotr(left, 1);
  exchange(left, right, 0, 0xAAAAAAAA);
  right = std::rotr(right, 1);
  exchange(right, left, 8, 0x00FF00FF);
  exchange(right, left, 2, 0x33333333);
  exchange(left, right, 16, 0x0000FFFF);
  exchange(left, right, 4, 0x0F0F0F0F);
  std::swap(left, right);
}

template <std::size_t N>
inline void pass(const Rounds& keys, Block* blocks) noexcept {
  for (std::size_t i = 0; i < keys.size(); i += 4) {
    for (std::size_t n = 0; n < N; ++n) blocks[n][0] ^= mix(blocks[n][1], &keys[i]);
    for (std::size_t n = 0; n < N; ++n) blocks[n][1] ^= mix(blocks[n][0], &keys[i + 2]);
  }
}

template <std::size_t N, std::size_t Passes>
inline void run(const std::array<Rounds, Passes>& keys, Block* blocks) noexcept {
  for (std::size_t n = 0; n < N; ++n) enter(blocks[n]);
  for (std::size_t i = 0; i < Passes; ++i) {
    if (i > 0)
      for (std::size_t n = 0; n < N; ++n) std::swap(blocks[n][0], blocks[n][1]);
    pass<N>(keys[i], blocks);
  }
  for (std::size_t n = 0; n < N; ++n) leave(blocks[n]);
}

// The six bits of S-box `box`, in the byte where mix() looks for them.
void placeSubkey(std::uint64_t subkey, std::uint32_t* words) noexcept {
  words[0] = words[1] = 0;
  for (std::size_t box = 0; box < 8; ++box) {
    const auto bits = static_cast<std::uint32_t>((subkey >> (42 - 6 * box)) & 63);
    words[box % 2] |= bits << (24 - 8 * (box / 2));
  }
}

std::uint64_t choose(std::uint64_t from, std::size_t bits, const std::uint8_t* choice,
                     std::size_t count) noexcept {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i < count; ++i)
    result = (result << 1) | ((from >> (bits - choice[i])) & 1);
  return result;
}

void expandKey(const std::uint8_t* key, Rounds& rounds) noexcept {
  constexpr std::uint32_t kMask = 0x0FFFFFFF;
  const std::uint64_t chosen =
      choose(loadWord<std::uint64_t, std::endian::big>(key), 64, kChoice1, 56);
  auto c = static_cast<std::uint32_t>(chosen >> 28);
  auto d = static_cast<std::uint32_t>(chosen) & kMask;
  for (std::size_t round = 0; round < 16; ++round) {
    const int turn = kRotations[round];
    c = ((c << turn) | (c >> (28 - turn))) & kMask;
    d = ((d << turn) | (d >> (28 - turn))) & kMask;
    placeSubkey(choose(std::uint64_t{c} << 28 | d, 56, kChoice2, 48), &rounds[2 * round]);
  }
}

Rounds reversed(const Rounds& rounds) noexcept {
  Rounds result;
  for (std::size_t i = 0; i < rounds.size(); i += 2) {
    result[i] = rounds[rounds.size() - 2 - i];
    result[i + 1] = rounds[rounds.size() - 1 - i];
  }
  return result;
}

}  // namespace

template <std::size_t Passes>
Passed<Passes>::~Passed() {
  secureWipe(encrypt_.data(), sizeof encrypt_);
  secureWipe(decrypt_.data(), sizeof decrypt_);
}

template <std::size_t Passes>
void Passed<Passes>::setKey(ByteSpan key) noexcept {
  for (std::size_t i = 0; i < Passes; ++i) {
    Rounds rounds;
    expandKey(key.data() + 8 * i % key.size(), rounds);
    const bool backwards = i == 1;
    encrypt_[i] = backwards ? reversed(rounds) : rounds;
    decrypt_[Passes - 1 - i] = backwards ? rounds : reversed(rounds);
    secureWipe(rounds.data(), sizeof rounds);
  }
}

template <std::size_t Passes>
template <std::size_t N>
inline void Passed<Passes>::encryptBlocks(Block* blocks) const noexcept {
  run<N>(encrypt_, blocks);
}

template <std::size_t Passes>
template <std::size_t N>
inline void Passed<Passes>::decryptBlocks(Block* blocks) const noexcept {
  run<N>(decrypt_, blocks);
}

template class Passed<1>;
template class Passed<3>;

}  // namespace des

template class BlockModes<Des, 8>;
template class BlockModes<TripleDes, 8>;

}  // namespace zantrel

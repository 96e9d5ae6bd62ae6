// Twofish after Schneier, Kelsey, Whiting, Wagner, Hall and Ferguson, "Twofish: A 128-Bit Block
// Cipher" (1998). The keyed S-boxes are computed once for a key and joined with the columns of the
// MDS matrix, so that g is four look-ups. Names follow the paper.

#include "crypto/twofish.h"

#include <algorithm>

#include "crypto/block_modes_impl.h"
#include "platform/secure_wipe.h"

namespace zantrel {

namespace {

using Bytes = std::array<std::uint8_t, 256>;

// Section 4.3.5: the fixed permutations q0 and q1, each from four tables of nibbles.
constexpr std::uint8_t kNibbles[2][4][16] = {
    {{0x8, 0x1, 0x7, 0xD, 0x6, 0xF, 0x3, 0x2, 0x0, 0xB, 0x5, 0x9, 0xE, 0xC, 0xA, 0x4},
     {0xE, 0xC, 0xB, 0x8, 0x1, 0x2, 0x3, 0x5, 0xF, 0x4, 0xA, 0x6, 0x7, 0x0, 0x9, 0xD},
     {0xB, 0xA, 0x5, 0xE, 0x6, 0xD, 0x9, 0x0, 0xC, 0x8, 0xF, 0x3, 0x2, 0x4, 0x7, 0x1},
     {0xD, 0x7, 0xF, 0x4, 0x1, 0x2, 0x6, 0xE, 0x9, 0xB, 0x3, 0x0, 0x8, 0x5, 0xC, 0xA}},
    {{0x2, 0x8, 0xB, 0xD, 0xF, 0x7, 0x6, 0xE, 0x3, 0x1, 0x9, 0x4, 0x0, 0xA, 0xC, 0x5},
     {0x1, 0xE, 0x2, 0xB, 0x4, 0xC, 0x3, 0x7, 0x6, 0xD, 0xA, 0x5, 0xF, 0x9, 0x0, 0x8},
     {0x4, 0xC, 0x7, 0x5, 0x1, 0x6, 0x9, 0xA, 0x0, 0xE, 0xD, 0x8, 0x2, 0xB, 0x3, 0xF},
     {0xB, 0x9, 0x5, 0x1, 0xC, 0x3, 0xD, 0xE, 0x6, 0x4, 0x7, 0xF, 0x2, 0x0, 0x8, 0xA}}};

constexpr Bytes permutation(const std::uint8_t (&t)[4][16]) {
  Bytes q{};
  for (unsigned x = 0; x < 256; ++x) {
    unsigned a = x >> 4;
    unsigned b = x & 15;
    for (std::size_t step = 0; step < 4; step += 2) {
      const unsigned sum = a ^ b;
      const unsigned turned = (a ^ ((b >> 1) | (b << 3)) ^ (a << 3)) & 15;
      a = t[step][sum];
      b = t[step + 1][turned];
    }
    q[x] = static_cast<std::uint8_t>((b << 4) | a);
  }
  return q;
}

constexpr Bytes kQ[2] = {permutation(kNibbles[0]), permutation(kNibbles[1])};

// In the field of 256 elements with the given polynomial.
constexpr std::uint8_t multiply(unsigned a, unsigned b, unsigned polynomial) {
  unsigned product = 0;
  for (; b != 0; b >>= 1) {
    if ((b & 1) != 0) product ^= a;
    a = (a << 1) ^ ((a >> 7) * polynomial);
  }
  return static_cast<std::uint8_t>(product);
}

constexpr std::uint8_t kMds[4][4] = {{0x01, 0xEF, 0x5B, 0x5B},
                                     {0x5B, 0xEF, 0xEF, 0x01},
                                     {0xEF, 0x5B, 0x01, 0xEF},
                                     {0xEF, 0x01, 0xEF, 0x5B}};
constexpr std::uint8_t kReedSolomon[4][8] = {{0x01, 0xA4, 0x55, 0x87, 0x5A, 0x58, 0xDB, 0x9E},
                                             {0xA4, 0x56, 0x82, 0xF3, 0x1E, 0xC6, 0x68, 0xE5},
                                             {0x02, 0xA1, 0xFC, 0xC1, 0x47, 0xAE, 0x3D, 0x19},
                                             {0xA4, 0x55, 0x87, 0x5A, 0x58, 0xDB, 0x9E, 0x03}};

using Words = std::array<std::array<std::uint32_t, 256>, 4>;

// Column `i` of the MDS matrix times every byte.
constexpr Words mdsColumns() {
  Words columns{};
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t x = 0; x < 256; ++x)
      for (std::size_t row = 0; row < 4; ++row)
        columns[i][x] |= std::uint32_t{multiply(static_cast<unsigned>(x), kMds[row][i], 0x169)}
                         << (8 * row);
  return columns;
}

constexpr Words kMdsColumns = mdsColumns();

// Section 4.3.2, figure 2: which permutation each of the four byte lanes passes at each stage; the
// first two stages are for longer keys only.
constexpr std::uint8_t kStages[5][4] = {
    {1, 0, 0, 1}, {1, 1, 0, 0}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 0, 1, 0}};

// Byte lane `i` of the function h before the matrix. `list` holds `count` words, four bytes each.
std::uint8_t keyedByte(std::size_t i, std::uint8_t x, const std::uint8_t* list,
                       std::size_t count) noexcept {
  for (std::size_t k = count; k-- > 0;)
    x = static_cast<std::uint8_t>(kQ[kStages[3 - k][i]][x] ^ list[4 * k + i]);
  return kQ[kStages[4][i]][x];
}

std::uint32_t h(std::uint8_t x, const std::uint8_t* list, std::size_t count) noexcept {
  std::uint32_t result = 0;
  for (std::size_t i = 0; i < 4; ++i) result ^= kMdsColumns[i][keyedByte(i, x, list, count)];
  return result;
}

}  // namespace

inline std::uint32_t Twofish::g(std::uint32_t word) const noexcept {
  return (boxes_[0][word & 0xFF] ^ boxes_[1][(word >> 8) & 0xFF]) ^
         (boxes_[2][(word >> 16) & 0xFF] ^ boxes_[3][word >> 24]);
}

// g of the word rotated left by eight bits.
inline std::uint32_t Twofish::gRotated(std::uint32_t word) const noexcept {
  return (boxes_[1][word & 0xFF] ^ boxes_[2][(word >> 8) & 0xFF]) ^
         (boxes_[3][(word >> 16) & 0xFF] ^ boxes_[0][word >> 24]);
}

// One round; `Half` is where the words that stay as they are begin.
template <std::size_t Half, std::size_t N>
inline void Twofish::encryptRound(Block* blocks, const std::uint32_t* keys) const noexcept {
  for (std::size_t n = 0; n < N; ++n) {
    Block& r = blocks[n];
    std::uint32_t& c = r[2 - Half];
    std::uint32_t& d = r[3 - Half];
    const std::uint32_t t1 = gRotated(r[Half + 1]);
    const std::uint32_t t0 = g(r[Half]) + t1;
    c = std::rotr(c ^ (t0 + keys[0]), 1);
    d = std::rotl(d, 1) ^ (t0 + (t1 + keys[1]));
  }
}

template <std::size_t Half, std::size_t N>
inline void Twofish::decryptRound(Block* blocks, const std::uint32_t* keys) const noexcept {
  for (std::size_t n = 0; n < N; ++n) {
    Block& r = blocks[n];
    std::uint32_t& c = r[2 - Half];
    std::uint32_t& d = r[3 - Half];
    const std::uint32_t t1 = gRotated(r[Half + 1]);
    const std::uint32_t t0 = g(r[Half]) + t1;
    c = std::rotl(c, 1) ^ (t0 + keys[0]);
    d = std::rotr(d ^ (t0 + (t1 + keys[1])), 1);
  }
}

template <std::size_t N>
inline void Twofish::encryptBlocks(Block* blocks) const noexcept {
  for (std::size_t n = 0; n < N; ++n)
    for (std::size_t i = 0; i < 4; ++i) blocks[n][i] ^= subkeys_[i];
  for (std::size_t key = 8; key < 40; key += 4) {
    encryptRound<0, N>(blocks, &subkeys_[key]);
    encryptRound<2, N>(blocks, &subkeys_[key + 2]);
  }
  for (std::size_t n = 0; n < N; ++n) {
    const Block r = blocks[n];
    for (std::size_t i = 0; i < 4; ++i) blocks[n][i] = r[(i + 2) % 4] ^ subkeys_[4 + i];
  }
}

template <std::size_t N>
inline void Twofish::decryptBlocks(Block* blocks) const noexcept {
  for (std::size_t n = 0; n < N; ++n) {
    const Block r = blocks[n];
    for (std::size_t i = 0; i < 4; ++i) blocks[n][(i + 2) % 4] = r[i] ^ subkeys_[4 + i];
  }
  for (std::size_t key = 40; key > 8; key -= 4) {
    decryptRound<2, N>(blocks, &subkeys_[key - 2]);
    decryptRound<0, N>(blocks, &subkeys_[key - 4]);
  }
  for (std::size_t n = 0; n < N; ++n)
    for (std::size_t i = 0; i < 4; ++i) blocks[n][i] ^= subkeys_[i];
}

Twofish::~Twofish() {
  secureWipe(subkeys_.data(), sizeof subkeys_);
  secureWipe(boxes_.data(), sizeof boxes_);
}

// Section 4.3: the key's even words make one half of the subkeys, the odd words the other, and
// their Reed-Solomon remainders, in reverse order, the S-boxes.
void Twofish::setKey(ByteSpan key) noexcept {
  struct Material {
    std::uint8_t even[16];
    std::uint8_t odd[16];
    std::uint8_t boxes[16];
  } material{};
  const std::size_t size = std::min<std::size_t>(key.size(), 32);
  const std::size_t count = size <= 16 ? 2 : size <= 24 ? 3 : 4;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t group = i / 8;
    std::uint8_t* const half = i % 8 < 4 ? material.even : material.odd;
    half[4 * group + i % 4] = key[i];
    for (std::size_t row = 0; row < 4; ++row)
      material.boxes[4 * (count - 1 - group) + row] ^=
          multiply(key[i], kReedSolomon[row][i % 8], 0x14D);
  }
  for (std::size_t i = 0; i < subkeys_.size(); i += 2) {
    const std::uint32_t a = h(static_cast<std::uint8_t>(i), material.even, count);
    const std::uint32_t b = std::rotl(h(static_cast<std::uint8_t>(i + 1), material.odd, count), 8);
    subkeys_[i] = a + b;
    subkeys_[i + 1] = std::rotl(a + 2 * b, 9);
  }
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t x = 0; x < 256; ++x)
      boxes_[i][x] =
          kMdsColumns[i][keyedByte(i, static_cast<std::uint8_t>(x), material.boxes, count)];
  secureWipe(&material, sizeof material);
}

template class BlockModes<Twofish, 16>;

}  // namespace zantrel

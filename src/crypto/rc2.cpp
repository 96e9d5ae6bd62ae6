// RC2 after RFC 2268: 16 mixing rounds over four words of 16 bits, with a mashing round after the
// fifth and the eleventh. Mixing is plain arithmetic, so independent blocks run in vector lanes.

#include "crypto/rc2.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "crypto/block_modes_impl.h"
#include "platform/secure_wipe.h"

namespace zantrel {

namespace {

// Digits of pi as a permutation of the bytes; RFC 2268, section 2.
constexpr std::uint8_t kPi[256] = {
    0xD9, 0x78, 0xF9, 0xC4, 0x19, 0xDD, 0xB5, 0xED, 0x28, 0xE9, 0xFD, 0x79, 0x4A, 0xA0, 0xD8, 0x9D,
    0xC6, 0x7E, 0x37, 0x83, 0x2B, 0x76, 0x53, 0x8E, 0x62, 0x4C, 0x64, 0x88, 0x44, 0x8B, 0xFB, 0xA2,
    0x17, 0x9A, 0x59, 0xF5, 0x87, 0xB3, 0x4F, 0x13, 0x61, 0x45, 0x6D, 0x8D, 0x09, 0x81, 0x7D, 0x32,
    0xBD, 0x8F, 0x40, 0xEB, 0x86, 0xB7, 0x7B, 0x0B, 0xF0, 0x95, 0x21, 0x22, 0x5C, 0x6B, 0x4E, 0x82,
    0x54, 0xD6, 0x65, 0x93, 0xCE, 0x60, 0xB2, 0x1C, 0x73, 0x56, 0xC0, 0x14, 0xA7, 0x8C, 0xF1, 0xDC,
    0x12, 0x75, 0xCA, 0x1F, 0x3B, 0xBE, 0xE4, 0xD1, 0x42, 0x3D, 0xD4, 0x30, 0xA3, 0x3C, 0xB6, 0x26,
    0x6F, 0xBF, 0x0E, 0xDA, 0x46, 0x69, 0x07, 0x57, 0x27, 0xF2, 0x1D, 0x9B, 0xBC, 0x94, 0x43, 0x03,
    0xF8, 0x11, 0xC7, 0xF6, 0x90, 0xEF, 0x3E, 0xE7, 0x06, 0xC3, 0xD5, 0x2F, 0xC8, 0x66, 0x1E, 0xD7,
    0x08, 0xE8, 0xEA, 0xDE, 0x80, 0x52, 0xEE, 0xF7, 0x84, 0xAA, 0x72, 0xAC, 0x35, 0x4D, 0x6A, 0x2A,
    0x96, 0x1A, 0xD2, 0x71, 0x5A, 0x15, 0x49, 0x74, 0x4B, 0x9F, 0xD0, 0x5E, 0x04, 0x18, 0xA4, 0xEC,
    0xC2, 0xE0, 0x41, 0x6E, 0x0F, 0x51, 0xCB, 0xCC, 0x24, 0x91, 0xAF, 0x50, 0xA1, 0xF4, 0x70, 0x39,
    0x99, 0x7C, 0x3A, 0x85, 0x23, 0xB8, 0xB4, 0x7A, 0xFC, 0x02, 0x36, 0x5B, 0x25, 0x55, 0x97, 0x31,
    0x2D, 0x5D, 0xFA, 0x98, 0xE3, 0x8A, 0x92, 0xAE, 0x05, 0xDF, 0x29, 0x10, 0x67, 0x6C, 0xBA, 0xC9,
    0xD3, 0x00, 0xE6, 0xCF, 0xE1, 0x9E, 0xA8, 0x2C, 0x63, 0x16, 0x01, 0x3F, 0x58, 0xE2, 0x89, 0xA9,
    0x0D, 0x38, 0x34, 0x1B, 0xAB, 0x33, 0xFF, 0xB0, 0xBB, 0x48, 0x0C, 0x5F, 0xB9, 0xB1, 0xCD, 0x2E,
    0xC5, 0xF3, 0xDB, 0x47, 0xE5, 0xA5, 0x9C, 0x77, 0x0A, 0xA6, 0x20, 0x68, 0xFE, 0x7F, 0xC1, 0xAD};

constexpr std::size_t kRounds = 16;
constexpr std::size_t kMashesAt[2] = {5, 11};  ///< before these rounds
constexpr int kTurns[4] = {1, 2, 3, 5};

constexpr std::uint16_t low(unsigned value) {
  return static_cast<std::uint16_t>(value);
}

// The words of N blocks, all first words together and so on: one block in plain words, several in
// vectors, which every compiler has for every processor.
using Vector = std::uint16_t __attribute__((vector_size(16)));
template <std::size_t N>
struct State {
  using Word = std::conditional_t<N % 8 == 0, Vector, std::uint16_t>;
  static constexpr std::size_t kCount = N * sizeof(std::uint16_t) / sizeof(Word);
  using Lanes = std::uint16_t[4][N];

  Word word[4][kCount];

  // `change` gets the words as lanes[i][n].
  template <class Change>
  void byLane(const Change& change) noexcept {
    Lanes lanes;
    std::memcpy(lanes, word, sizeof lanes);
    change(lanes);
    std::memcpy(word, lanes, sizeof lanes);
  }

  // What the three other words add to word I. Handed out by reference: how vectors are returned
  // depends on the processor on 32-bit systems.
  template <std::size_t I>
  void others(std::size_t n, Word& sum) const noexcept {
    const Word before = word[(I + 3) % 4][n];
    sum = static_cast<Word>((before & word[(I + 2) % 4][n]) + (~before & word[(I + 1) % 4][n]));
  }

  template <std::size_t I>
  void mixWord(std::uint16_t key) noexcept {
    for (std::size_t n = 0; n < kCount; ++n) {
      Word sum;
      others<I>(n, sum);
      sum = static_cast<Word>(static_cast<Word>(word[I][n] + key) + sum);
      word[I][n] = static_cast<Word>((sum << kTurns[I]) | (sum >> (16 - kTurns[I])));
    }
  }

  template <std::size_t I>
  void unmixWord(std::uint16_t key) noexcept {
    for (std::size_t n = 0; n < kCount; ++n) {
      Word sum;
      others<I>(n, sum);
      const Word w = word[I][n];
      const auto turned = static_cast<Word>((w >> kTurns[I]) | (w << (16 - kTurns[I])));
      word[I][n] = static_cast<Word>(turned - key - sum);
    }
  }

  void mix(const std::uint16_t* keys) noexcept {
    mixWord<0>(keys[0]);
    mixWord<1>(keys[1]);
    mixWord<2>(keys[2]);
    mixWord<3>(keys[3]);
  }

  void unmix(const std::uint16_t* keys) noexcept {
    unmixWord<3>(keys[3]);
    unmixWord<2>(keys[2]);
    unmixWord<1>(keys[1]);
    unmixWord<0>(keys[0]);
  }

  void mash(const std::uint16_t* keys) noexcept {
    byLane([keys](Lanes& lanes) {
      for (std::size_t n = 0; n < N; ++n)
        for (std::size_t i = 0; i < 4; ++i)
          lanes[i][n] = low(lanes[i][n] + unsigned{keys[lanes[(i + 3) % 4][n] & 63]});
    });
  }

  void unmash(const std::uint16_t* keys) noexcept {
    byLane([keys](Lanes& lanes) {
      for (std::size_t n = 0; n < N; ++n)
        for (std::size_t i = 4; i-- > 0;)
          lanes[i][n] = low(lanes[i][n] - unsigned{keys[lanes[(i + 3) % 4][n] & 63]});
    });
  }

  void get(const std::array<std::uint16_t, 4>* blocks) noexcept {
    byLane([blocks](Lanes& lanes) {
      for (std::size_t n = 0; n < N; ++n)
        for (std::size_t i = 0; i < 4; ++i) lanes[i][n] = blocks[n][i];
    });
  }

  void put(std::array<std::uint16_t, 4>* blocks) noexcept {
    byLane([blocks](const Lanes& lanes) {
      for (std::size_t n = 0; n < N; ++n)
        for (std::size_t i = 0; i < 4; ++i) blocks[n][i] = lanes[i][n];
    });
  }
};

}  // namespace

template <std::size_t N>
inline void Rc2::encryptBlocks(Block* blocks) const noexcept {
  State<N> state{};
  state.get(blocks);
  const std::uint16_t* const keys = words_.data();
  std::size_t round = 0;
  for (const std::size_t mash : kMashesAt) {
    for (; round < mash; ++round) state.mix(keys + 4 * round);
    state.mash(keys);
  }
  for (; round < kRounds; ++round) state.mix(keys + 4 * round);
  state.put(blocks);
}

template <std::size_t N>
inline void Rc2::decryptBlocks(Block* blocks) const noexcept {
  State<N> state{};
  state.get(blocks);
  const std::uint16_t* const keys = words_.data();
  std::size_t round = kRounds;
  for (const std::size_t mash : {kMashesAt[1], kMashesAt[0]}) {
    while (round > mash) state.unmix(keys + 4 * --round);
    state.unmash(keys);
  }
  while (round > 0) state.unmix(keys + 4 * --round);
  state.put(blocks);
}

Rc2::~Rc2() {
  secureWipe(words_.data(), sizeof words_);
}

void Rc2::setKey(ByteSpan key, int effectiveBits) noexcept {
  std::array<std::uint8_t, 128> bytes{};
  const std::size_t size = std::min(key.size(), bytes.size());
  std::copy_n(key.begin(), size, bytes.begin());
  for (std::size_t i = size; i < bytes.size(); ++i)
    bytes[i] = kPi[(bytes[i - 1] + bytes[i - size]) & 0xFF];

  const auto bits = static_cast<std::size_t>(std::clamp(effectiveBits, 1, 1024));
  const std::size_t effective = (bits + 7) / 8;
  std::size_t i = bytes.size() - effective;
  bytes[i] = kPi[bytes[i] & (0xFFU >> (8 * effective - bits))];
  while (i-- > 0) bytes[i] = kPi[bytes[i + 1] ^ bytes[i + effective]];

  for (std::size_t w = 0; w < words_.size(); ++w)
    words_[w] = low(bytes[2 * w] | (unsigned{bytes[2 * w + 1]} << 8));
  secureWipe(bytes.data(), bytes.size());
}

template class BlockModes<Rc2, 8>;

}  // namespace zantrel

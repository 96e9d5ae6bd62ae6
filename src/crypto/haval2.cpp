// HAVAL: each pass takes the 32 words of a block in an order of its own through a function of seven
// words, whose arguments are permuted by a table that depends on the number of passes. Shorter
// digests fold the words left over into the others at the end. The tables below bear the numbers of
// the paper; the argument x6 stands first there and here.

#include "crypto/haval2.h"

#include <algorithm>
#include <bit>

namespace zantrel {
namespace {

using Word = std::uint32_t;

// Fraction of pi: the initial values, then the constants of passes 2 to 5.
constexpr Word kPi[136] = {
    0x243F6A88, 0x85A308D3, 0x13198A2E, 0x03707344, 0xA4093822, 0x299F31D0, 0x082EFA98, 0xEC4E6C89,
    0x452821E6, 0x38D01377, 0xBE5466CF, 0x34E90C6C, 0xC0AC29B7, 0xC97C50DD, 0x3F84D5B5, 0xB5470917,
    0x9216D5D9, 0x8979FB1B, 0xD1310BA6, 0x98DFB5AC, 0x2FFD72DB, 0xD01ADFB7, 0xB8E1AFED, 0x6A267E96,
    0xBA7C9045, 0xF12C7F99, 0x24A19947, 0xB3916CF7, 0x0801F2E2, 0x858EFC16, 0x636920D8, 0x71574E69,
    0xA458FEA3, 0xF4933D7E, 0x0D95748F, 0x728EB658, 0x718BCD58, 0x82154AEE, 0x7B54A41D, 0xC25A59B5,
    0x9C30D539, 0x2AF26013, 0xC5D1B023, 0x286085F0, 0xCA417918, 0xB8DB38EF, 0x8E79DCB0, 0x603A180E,
    0x6C9E0E8B, 0xB01E8A3E, 0xD71577C1, 0xBD314B27, 0x78AF2FDA, 0x55605C60, 0xE65525F3, 0xAA55AB94,
    0x57489862, 0x63E81440, 0x55CA396A, 0x2AAB10B6, 0xB4CC5C34, 0x1141E8CE, 0xA15486AF, 0x7C72E993,
    0xB3EE1411, 0x636FBC2A, 0x2BA9C55D, 0x741831F6, 0xCE5C3E16, 0x9B87931E, 0xAFD6BA33, 0x6C24CF5C,
    0x7A325381, 0x28958677, 0x3B8F4898, 0x6B4BB9AF, 0xC4BFE81B, 0x66282193, 0x61D809CC, 0xFB21A991,
    0x487CAC60, 0x5DEC8032, 0xEF845D5D, 0xE98575B1, 0xDC262302, 0xEB651B88, 0x23893E81, 0xD396ACC5,
    0x0F6D6FF3, 0x83F44239, 0x2E0B4482, 0xA4842004, 0x69C8F04A, 0x9E1F9B5E, 0x21C66842, 0xF6E96C9A,
    0x670C9C61, 0xABD388F0, 0x6A51A0D2, 0xD8542F68, 0x960FA728, 0xAB5133A3, 0x6EEF0B6C, 0x137A3BE4,
    0xBA3BF050, 0x7EFB2A98, 0xA1F1651D, 0x39AF0176, 0x66CA593E, 0x82430E88, 0x8CEE8619, 0x456F9FB4,
    0x7D84A5C3, 0x3B8B5EBE, 0xE06F75D8, 0x85C12073, 0x401A449F, 0x56C16AA6, 0x4ED3AA62, 0x363F7706,
    0x1BFEDF72, 0x429B023D, 0x37D0D724, 0xD00A1248, 0xDB0FEAD3, 0x49F1C09B, 0x075372C9, 0x80991B7B,
    0x25D479D8, 0xF6E8DEF7, 0xE3FE501A, 0xB6794C3B, 0x976CE0BD, 0x04C006BA, 0xC1A94FB6, 0x409F60C4};

// Order of the words in each pass.
constexpr int kOrder[5][32] = {{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31},
                               {5,  14, 26, 18, 11, 28, 7,  16, 0,  23, 20, 22, 1, 10, 4,  8,
                                30, 3,  21, 9,  17, 24, 29, 6,  19, 12, 15, 13, 2, 25, 31, 27},
                               {19, 9,  4, 20, 28, 17, 8,  22, 29, 14, 25, 12, 24, 30, 16, 26,
                                31, 15, 7, 3,  1,  0,  18, 27, 13, 6,  21, 10, 23, 11, 5,  2},
                               {24, 4,  0,  14, 2, 7,  28, 23, 26, 6,  30, 20, 18, 25, 19, 3,
                                22, 11, 31, 21, 8, 27, 12, 9,  1,  29, 5,  15, 17, 10, 16, 13},
                               {27, 3, 21, 26, 17, 11, 20, 29, 19, 0,  12, 7,  13, 8, 31, 10,
                                5,  9, 14, 30, 18, 6,  28, 24, 2,  23, 16, 22, 4,  1, 25, 15}};

// Which words stand for x6 ... x0 in the function of a pass, by the number of passes.
constexpr int kPermutation[3][5][7] = {
    {{1, 0, 3, 5, 6, 2, 4}, {4, 2, 1, 0, 5, 3, 6}, {6, 1, 2, 3, 4, 5, 0}, {}, {}},
    {{2, 6, 1, 4, 5, 3, 0},
     {3, 5, 2, 0, 1, 6, 4},
     {1, 4, 3, 6, 0, 2, 5},
     {6, 4, 0, 5, 2, 1, 3},
     {}},
    {{3, 4, 1, 0, 5, 2, 6},
     {6, 2, 1, 0, 3, 4, 5},
     {2, 6, 0, 4, 3, 1, 5},
     {1, 5, 3, 2, 0, 4, 6},
     {2, 5, 0, 6, 4, 3, 1}}};

template <int Pass>
[[gnu::always_inline]] inline Word f(Word x6, Word x5, Word x4, Word x3, Word x2, Word x1,
                                     Word x0) {
  if constexpr (Pass == 0) return (x1 & (x0 ^ x4)) ^ (x2 & x5) ^ (x3 & x6) ^ x0;
  if constexpr (Pass == 1)
    return (x2 & ((x1 & ~x3) ^ (x4 & x5) ^ x6 ^ x0)) ^ (x4 & (x1 ^ x5)) ^ (x3 & x5) ^ x0;
  if constexpr (Pass == 2) return (x3 & ((x1 & x2) ^ x6 ^ x0)) ^ (x1 & x4) ^ (x2 & x5) ^ x0;
  if constexpr (Pass == 3)
    return (x4 & ((x5 & ~x2) ^ (x3 & ~x6) ^ x1 ^ x6 ^ x0)) ^ (x3 & ((x1 & x2) ^ x5 ^ x6)) ^
           (x2 & x6) ^ x0;
  if constexpr (Pass == 4) return (x0 & ((x1 & x2 & x3) ^ ~x5)) ^ (x1 & x4) ^ (x2 & x5) ^ (x3 & x6);
}

template <int Passes, int Pass, int Step = 0>
[[gnu::always_inline]] inline void pass(Word (&v)[8], const std::uint8_t* block) {
  constexpr const int(&kArgument)[7] = kPermutation[Passes - 3][Pass];
  // Nothing moves: the word called x_i is found i places behind the start of the step.
  const auto x = [&v](int i) { return v[(i + 32 - Step) & 7]; };
  const Word mixed = f<Pass>(x(kArgument[0]), x(kArgument[1]), x(kArgument[2]), x(kArgument[3]),
                             x(kArgument[4]), x(kArgument[5]), x(kArgument[6]));
  Word& last = v[(7 + 32 - Step) & 7];
  last = std::rotr(last, 11) + loadWord<Word, std::endian::little>(block + 4 * kOrder[Pass][Step]) +
         (Pass > 0 ? kPi[8 + 32 * (Pass - 1) + Step] : 0) + std::rotr(mixed, 7);
  if constexpr (Step < 31) pass<Passes, Pass, Step + 1>(v, block);
}

template <int Passes, int Pass = 0>
[[gnu::always_inline]] inline void passes(Word (&v)[8], const std::uint8_t* block) {
  pass<Passes, Pass>(v, block);
  if constexpr (Pass + 1 < Passes) passes<Passes, Pass + 1>(v, block);
}

template <int Passes>
void absorb(std::array<Word, 8>& words, const std::uint8_t* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += HavalState::kBlockBytes) {
    Word v[8];
    for (std::size_t i = 0; i < 8; ++i) v[i] = words[i];
    passes<Passes>(v, blocks);
    for (std::size_t i = 0; i < 8; ++i) words[i] += v[i];
  }
}

}  // namespace

void HavalState::start() noexcept {
  std::copy(kPi, kPi + 8, words_.begin());
}

void HavalState::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  if (passes_ == 3) return absorb<3>(words_, blocks, count);
  if (passes_ == 4) return absorb<4>(words_, blocks, count);
  absorb<5>(words_, blocks, count);
}

void HavalState::finish(ByteSpan rest, std::uint64_t total, std::uint8_t* out) {
  // The length stands behind sixteen bits that hold the version, 1, the passes and the size.
  constexpr int kVersion = 1;
  std::array<std::uint8_t, 10> trailer;
  trailer[0] = static_cast<std::uint8_t>((bits_ & 3) << 6 | passes_ << 3 | kVersion);
  trailer[1] = static_cast<std::uint8_t>(bits_ >> 2);
  storeWord<std::endian::little>(total << 3, trailer.data() + 2);
  absorbPadded(*this, rest, 0x01, trailer);
  fold();
  for (std::size_t i = 0; i < digestBytes() / 4; ++i)
    storeWord<std::endian::little>(words_[i], out + 4 * i);
}

void HavalState::fold() noexcept {
  auto& h = words_;
  const auto part = [&h](std::size_t word, int from, int bits) {
    return h[word] & (((Word{1} << bits) - 1) << from);
  };
  if (bits_ == 128) {
    // Byte i of the words 7 to 4, a byte further for each.
    for (int i = 0; i < 4; ++i) {
      const Word bytes = part(7, 8 * i, 8) | part(6, 8 * ((i + 3) & 3), 8) |
                         part(5, 8 * ((i + 2) & 3), 8) | part(4, 8 * ((i + 1) & 3), 8);
      h[static_cast<std::size_t>(i)] += std::rotr(bytes, (8 * (i + 1)) & 31);
    }
  } else if (bits_ == 160) {
    h[0] += std::rotr(part(7, 0, 6) | part(6, 25, 7) | part(5, 19, 6), 19);
    h[1] += std::rotr(part(7, 6, 6) | part(6, 0, 6) | part(5, 25, 7), 25);
    h[2] += part(7, 12, 7) | part(6, 6, 6) | part(5, 0, 6);
    h[3] += (part(7, 19, 6) | part(6, 12, 7) | part(5, 6, 6)) >> 6;
    h[4] += (part(7, 25, 7) | part(6, 19, 6) | part(5, 12, 7)) >> 12;
  } else if (bits_ == 192) {
    h[0] += std::rotr(part(7, 0, 5) | part(6, 26, 6), 26);
    h[1] += part(7, 5, 5) | part(6, 0, 5);
    h[2] += (part(7, 10, 6) | part(6, 5, 5)) >> 5;
    h[3] += (part(7, 16, 5) | part(6, 10, 6)) >> 10;
    h[4] += (part(7, 21, 5) | part(6, 16, 5)) >> 16;
    h[5] += (part(7, 26, 6) | part(6, 21, 5)) >> 21;
  } else if (bits_ == 224) {
    constexpr int kFrom[7] = {27, 22, 18, 13, 9, 4, 0};
    constexpr int kBits[7] = {5, 5, 4, 5, 4, 5, 4};
    const Word last = h[7];
    for (std::size_t i = 0; i < 7; ++i) h[i] += (last >> kFrom[i]) & ((Word{1} << kBits[i]) - 1);
  }
}

int Haval2::legalBits(int bits) noexcept {
  return std::clamp(bits, 128, 256) / 32 * 32;
}

int Haval2::legalPasses(int passes) noexcept {
  return std::clamp(passes, 3, 5);
}

}  // namespace zantrel

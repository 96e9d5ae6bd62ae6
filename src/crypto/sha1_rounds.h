#pragma once
// The eighty steps of SHA-1 in plain C++, always inlined, so that each instruction set compiles
// them for itself (with BMI2 the rotations need no copy).

#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"

namespace zantrel::sha {

template <int Step>
[[gnu::always_inline]] inline void sha1Step(std::uint32_t (&v)[5], std::uint32_t (&w)[16],
                                            const std::uint8_t* block) {
  constexpr std::uint32_t kConstant[4] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};
  const std::uint32_t a = v[(80 - Step) % 5];
  std::uint32_t& b = v[(81 - Step) % 5];
  const std::uint32_t c = v[(82 - Step) % 5];
  const std::uint32_t d = v[(83 - Step) % 5];
  std::uint32_t& e = v[(84 - Step) % 5];
  std::uint32_t& word = w[Step & 15];
  if constexpr (Step < 16) {
    word = loadWord<std::uint32_t, std::endian::big>(block + 4 * Step);
  } else {
    word = std::rotl(word ^ w[(Step + 2) & 15] ^ w[(Step + 8) & 15] ^ w[(Step + 13) & 15], 1);
  }
  e += word + kConstant[Step / 20];
  if constexpr (Step < 20) {
    e += ((c ^ d) & b) ^ d;
  } else if constexpr (Step >= 40 && Step < 60) {
    e += c & d;  // the majority as two terms that share no bit
    e += (c ^ d) & b;
  } else {
    e += b ^ c ^ d;
  }
  e += std::rotl(a, 5);
  b = std::rotl(b, 30);
}

template <int Step = 0>
[[gnu::always_inline]] inline void sha1Steps(std::uint32_t (&v)[5], std::uint32_t (&w)[16],
                                             const std::uint8_t* block) {
  sha1Step<Step>(v, w, block);
  if constexpr (Step < 79) sha1Steps<Step + 1>(v, w, block);
}

[[gnu::always_inline]] inline void sha1Blocks(std::uint32_t* state, const std::uint8_t* blocks,
                                              std::size_t count) {
  std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
  for (; count > 0; --count, blocks += 64) {
    std::uint32_t w[16];
    sha1Steps(v, w, blocks);
    for (int i = 0; i < 5; ++i) {
      v[i] += state[i];
      state[i] = v[i];
    }
  }
}

}  // namespace zantrel::sha

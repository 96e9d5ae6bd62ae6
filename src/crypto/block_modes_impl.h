#pragma once
// ECB and CBC (NIST SP 800-38A, sections 6.1 and 6.2), written once.
//
// CBC encryption is a chain: a block waits for the one before, so it runs one block at a time with
// the chain in registers. Where blocks do not depend on each other (ECB, CBC decryption) the cipher
// gets `kLanes` of them at once: the processor overlaps their table look-ups, which take most of
// the time of the older ciphers.
//
// A cipher derives from BlockModes<itself, size>, instantiates it in its own source file behind its
// own bodies, makes it a friend, and has
//   Block                               std::array of words
//   load(bytes), store(block, bytes)    between bytes and words
//   encryptBlocks<N>(blocks), decryptBlocks<N>(blocks)
//   kLanes

#include <type_traits>

#include "crypto/block_modes.h"

namespace zantrel {

namespace block_modes {

template <class Block>
inline void add(Block& block, const Block& other) noexcept {
  for (std::size_t i = 0; i < block.size(); ++i)
    block[i] = static_cast<typename Block::value_type>(block[i] ^ other[i]);
}

/// Calls group(N) with so many blocks to do at once, as a constant, until none are left. Ciphers
/// with many lanes do what is left of a text, or a short one, in groups of eight.
template <std::size_t Lanes, class Group>
inline void inGroups(std::size_t blocks, const Group& group) noexcept {
  constexpr std::size_t kFew = Lanes > 8 ? 8 : 1;
  const auto all = [&](auto count) {
    for (; blocks >= count; blocks -= count) group(count);
  };
  all(std::integral_constant<std::size_t, Lanes>{});
  all(std::integral_constant<std::size_t, kFew>{});
  if constexpr (kFew > 1) all(std::integral_constant<std::size_t, 1>{});
}

}  // namespace block_modes

template <class Cipher, std::size_t BlockSize>
void BlockModes<Cipher, BlockSize>::ecbEncrypt(const std::uint8_t* in, std::uint8_t* out,
                                               std::size_t blocks) const noexcept {
  const auto group = [&]<std::size_t N>(std::integral_constant<std::size_t, N>) {
    typename Cipher::Block text[N];
    for (std::size_t n = 0; n < N; ++n, in += BlockSize) text[n] = Cipher::load(in);
    cipher().template encryptBlocks<N>(text);
    for (std::size_t n = 0; n < N; ++n, out += BlockSize) Cipher::store(text[n], out);
  };
  block_modes::inGroups<Cipher::kLanes>(blocks, group);
}

template <class Cipher, std::size_t BlockSize>
void BlockModes<Cipher, BlockSize>::ecbDecrypt(const std::uint8_t* in, std::uint8_t* out,
                                               std::size_t blocks) const noexcept {
  const auto group = [&]<std::size_t N>(std::integral_constant<std::size_t, N>) {
    typename Cipher::Block text[N];
    for (std::size_t n = 0; n < N; ++n, in += BlockSize) text[n] = Cipher::load(in);
    cipher().template decryptBlocks<N>(text);
    for (std::size_t n = 0; n < N; ++n, out += BlockSize) Cipher::store(text[n], out);
  };
  block_modes::inGroups<Cipher::kLanes>(blocks, group);
}

template <class Cipher, std::size_t BlockSize>
void BlockModes<Cipher, BlockSize>::cbcEncrypt(std::uint8_t* chain, const std::uint8_t* in,
                                               std::uint8_t* out,
                                               std::size_t blocks) const noexcept {
  auto block = Cipher::load(chain);
  for (; blocks > 0; --blocks, in += BlockSize, out += BlockSize) {
    block_modes::add(block, Cipher::load(in));
    cipher().template encryptBlocks<1>(&block);
    Cipher::store(block, out);
  }
  Cipher::store(block, chain);
}

template <class Cipher, std::size_t BlockSize>
void BlockModes<Cipher, BlockSize>::cbcDecrypt(std::uint8_t* chain, const std::uint8_t* in,
                                               std::uint8_t* out,
                                               std::size_t blocks) const noexcept {
  auto previous = Cipher::load(chain);
  // All of a group is read before any of it is written: the output may be the input.
  const auto group = [&]<std::size_t N>(std::integral_constant<std::size_t, N>) {
    typename Cipher::Block ciphertext[N];
    typename Cipher::Block text[N];
    for (std::size_t n = 0; n < N; ++n, in += BlockSize) text[n] = ciphertext[n] = Cipher::load(in);
    cipher().template decryptBlocks<N>(text);
    for (std::size_t n = 0; n < N; ++n, out += BlockSize) {
      block_modes::add(text[n], n == 0 ? previous : ciphertext[n - 1]);
      Cipher::store(text[n], out);
    }
    previous = ciphertext[N - 1];
  };
  block_modes::inGroups<Cipher::kLanes>(blocks, group);
  Cipher::store(previous, chain);
}

}  // namespace zantrel

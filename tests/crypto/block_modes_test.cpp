#include "crypto/block_modes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <vector>

#include "crypto/aes.h"
#include "crypto/blowfish.h"
#include "crypto/des.h"
#include "crypto/rc2.h"
#include "crypto/rc4.h"
#include "crypto/twofish.h"
#include "support/cipher_paths.h"

namespace zantrel::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t kMostBlocks = 70;

Bytes pattern(std::size_t size) {
  Bytes bytes(size);
  std::uint32_t state = 3;
  for (auto& byte : bytes)
    byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

// The definition of the modes, with one block at a time and nothing shared with the engine.
template <class Cipher>
Bytes chained(const Cipher& cipher, Bytes chain, const Bytes& text) {
  constexpr std::size_t kBlock = Cipher::kBlockSize;
  Bytes result(text.size());
  for (std::size_t at = 0; at < text.size(); at += kBlock) {
    for (std::size_t i = 0; i < kBlock; ++i)
      chain[i] = static_cast<std::uint8_t>(chain[i] ^ text[at + i]);
    cipher.ecbEncrypt(chain.data(), chain.data(), 1);
    std::copy(chain.begin(), chain.end(), result.begin() + static_cast<std::ptrdiff_t>(at));
  }
  return result;
}

template <class Cipher>
void checkModes(const Cipher& cipher) {
  constexpr std::size_t kBlock = Cipher::kBlockSize;
  const Bytes iv = pattern(kBlock);
  for (std::size_t blocks = 0; blocks <= kMostBlocks; ++blocks) {
    SCOPED_TRACE(blocks);
    const Bytes text = pattern(blocks * kBlock);
    const Bytes encrypted = chained(cipher, iv, text);
    const Bytes last = blocks == 0 ? iv : Bytes(encrypted.end() - kBlock, encrypted.end());
    Bytes work = text, chain = iv;
    cipher.cbcEncrypt(chain.data(), work.data(), work.data(), blocks);
    ASSERT_EQ(work, encrypted);
    ASSERT_EQ(chain, last);
    chain = iv;
    cipher.cbcDecrypt(chain.data(), work.data(), work.data(), blocks);
    ASSERT_EQ(work, text);
    ASSERT_EQ(chain, last);
    cipher.ecbEncrypt(work.data(), work.data(), blocks);
    for (std::size_t i = 0; i < blocks; ++i) {
      Bytes one(kBlock);
      cipher.ecbEncrypt(text.data() + i * kBlock, one.data(), 1);
      ASSERT_TRUE(std::equal(one.begin(), one.end(), work.data() + i * kBlock));
    }
    cipher.ecbDecrypt(work.data(), work.data(), blocks);
    ASSERT_EQ(work, text);
  }
}

TEST(BlockModesTest, EveryNumberOfBlocksWorksInPlaceAndHandsOnTheChain) {
  const Bytes key = pattern(32);
  const auto bytes = [&key](std::size_t size) { return ByteSpan(key).first(size); };
  Blowfish blowfish;
  blowfish.setKey(bytes(16));
  checkModes(blowfish);
  Twofish twofish;
  twofish.setKey(bytes(24));
  checkModes(twofish);
  Des des;
  des.setKey(bytes(8));
  checkModes(des);
  TripleDes tripleDes;
  tripleDes.setKey(bytes(24));
  checkModes(tripleDes);
  Rc2 rc2;
  rc2.setKey(bytes(16), 100);
  checkModes(rc2);
}

TEST(AesTest, EveryNumberOfBlocksWorksInPlaceAndHandsOnTheChain) {
  const Bytes key = pattern(32);
  onEachCipherPath([&key] {
    for (const std::size_t size : {16U, 24U, 32U}) {
      Aes aes;
      aes.setKey(ByteSpan(key).first(size));
      checkModes(aes);
    }
  });
}

TEST(Rc4Test, TheKeyStreamContinuesAcrossCallsOfAnySizeInPlace) {
  const Bytes key = pattern(16), text = pattern(500);
  Rc4 whole;
  whole.setKey(key);
  Bytes expected(text.size());
  whole.apply(text.data(), expected.data(), text.size());
  for (std::size_t piece = 1; piece <= 40; ++piece) {
    Rc4 cipher;
    cipher.setKey(key);
    Bytes work = text;
    for (std::size_t at = 0; at < work.size(); at += piece)
      cipher.apply(work.data() + at, work.data() + at, std::min(piece, work.size() - at));
    ASSERT_EQ(work, expected) << piece;
  }
}

// How many bytes of an object are not zero after it had a key and went away.
template <class Cipher, class... Settings>
std::size_t bytesLeft(std::size_t keySize, Settings... settings) {
  alignas(Cipher) static std::uint8_t storage[sizeof(Cipher)];
  Cipher* const cipher = std::construct_at(reinterpret_cast<Cipher*>(storage));
  cipher->setKey(ByteSpan(pattern(32)).first(keySize), settings...);
  std::destroy_at(cipher);
  const auto zeros = std::count(std::begin(storage), std::end(storage), 0);
  return sizeof storage - static_cast<std::size_t>(zeros);
}

TEST(CipherWipeTest, NoCipherLeavesItsKeyInMemory) {
  onEachCipherPath([] { EXPECT_LE(bytesLeft<Aes>(32), sizeof(void*)); });  // which path it took
  EXPECT_EQ(bytesLeft<Blowfish>(16), 0u);
  EXPECT_EQ(bytesLeft<Twofish>(16), 0u);
  EXPECT_EQ(bytesLeft<Des>(8), 0u);
  EXPECT_EQ(bytesLeft<TripleDes>(24), 0u);
  EXPECT_EQ(bytesLeft<Rc2>(16, 128), 0u);
  EXPECT_EQ(bytesLeft<Rc4>(16), 0u);
}

}  // namespace
}  // namespace zantrel::test

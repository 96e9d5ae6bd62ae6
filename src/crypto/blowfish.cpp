// Blowfish: a Feistel network of 16 rounds on 64 bits, after Bruce Schneier, "Description of a New
// Variable-Length Key, 64-Bit Block Cipher" (1993). Its boxes depend on the key: setting one costs
// 521 encryptions.

#include "crypto/blowfish.h"

#include <utility>

#include "crypto/block_modes_impl.h"
#include "platform/secure_wipe.h"

namespace zantrel {

inline std::uint32_t Blowfish::mix(std::uint32_t half) const noexcept {
  return ((boxes_[0][half >> 24] + boxes_[1][(half >> 16) & 0xFF]) ^
          boxes_[2][(half >> 8) & 0xFF]) +
         boxes_[3][half & 0xFF];
}

template <std::size_t N>
inline void Blowfish::encryptBlocks(Block* blocks) const noexcept {
  for (std::size_t n = 0; n < N; ++n) blocks[n][0] ^= subkeys_[0];
  for (std::size_t round = 1; round <= 16; round += 2) {
    for (std::size_t n = 0; n < N; ++n)
      blocks[n][1] = (blocks[n][1] ^ subkeys_[round]) ^ mix(blocks[n][0]);
    for (std::size_t n = 0; n < N; ++n)
      blocks[n][0] = (blocks[n][0] ^ subkeys_[round + 1]) ^ mix(blocks[n][1]);
  }
  for (std::size_t n = 0; n < N; ++n) {
    blocks[n][1] ^= subkeys_[17];
    std::swap(blocks[n][0], blocks[n][1]);
  }
}

template <std::size_t N>
inline void Blowfish::decryptBlocks(Block* blocks) const noexcept {
  for (std::size_t n = 0; n < N; ++n) blocks[n][0] ^= subkeys_[17];
  for (std::size_t round = 16; round >= 1; round -= 2) {
    for (std::size_t n = 0; n < N; ++n)
      blocks[n][1] = (blocks[n][1] ^ subkeys_[round]) ^ mix(blocks[n][0]);
    for (std::size_t n = 0; n < N; ++n)
      blocks[n][0] = (blocks[n][0] ^ subkeys_[round - 1]) ^ mix(blocks[n][1]);
  }
  for (std::size_t n = 0; n < N; ++n) {
    blocks[n][1] ^= subkeys_[0];
    std::swap(blocks[n][0], blocks[n][1]);
  }
}

Blowfish::~Blowfish() {
  secureWipe(subkeys_.data(), sizeof subkeys_);
  secureWipe(boxes_.data(), sizeof boxes_);
}

void Blowfish::setKey(ByteSpan key) noexcept {
  subkeys_ = kInitialSubkeys;
  boxes_ = kInitialBoxes;
  std::size_t at = 0;
  for (std::uint32_t& subkey : subkeys_) {
    for (int shift = 24; shift >= 0; shift -= 8, at = (at + 1) % key.size())
      subkey ^= static_cast<std::uint32_t>(key[at]) << shift;
  }
  Block block{};
  for (std::size_t i = 0; i < subkeys_.size(); i += 2) {
    encryptBlocks<1>(&block);
    subkeys_[i] = block[0];
    subkeys_[i + 1] = block[1];
  }
  for (auto& box : boxes_) {
    for (std::size_t i = 0; i < box.size(); i += 2) {
      encryptBlocks<1>(&block);
      box[i] = block[0];
      box[i + 1] = block[1];
    }
  }
}

template class BlockModes<Blowfish, 8>;

}  // namespace zantrel

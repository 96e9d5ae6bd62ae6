#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"
#include "core/bytes.h"
#include "crypto/block_modes.h"

namespace zantrel {

namespace des {

/// Both halves, each rotated left by one bit inside the cipher.
using Block = std::array<std::uint32_t, 2>;
/// Two words a round: the subkey's parts for S-boxes 1, 3, 5, 7 and for 2, 4, 6, 8.
using Rounds = std::array<std::uint32_t, 32>;

/// What DES and triple DES share: the round keys of `Passes` passes, in the order of their use.
template <std::size_t Passes>
class Passed : public BlockModes<Passed<Passes>, 8> {
 public:
  ~Passed();
  /// 8 bytes for one pass. For three, 24 bytes are K1, K2, K3 and 16 bytes K1, K2, K1. The lowest
  /// bit of each byte, meant for parity, is ignored.
  void setKey(ByteSpan key) noexcept;

 private:
  friend class BlockModes<Passed<Passes>, 8>;
  using Block = des::Block;
  static constexpr std::size_t kLanes = 4;

  static Block load(const std::uint8_t* p) noexcept {
    return {loadWord<std::uint32_t, std::endian::big>(p),
            loadWord<std::uint32_t, std::endian::big>(p + 4)};
  }
  static void store(const Block& block, std::uint8_t* p) noexcept {
    storeWord<std::endian::big>(block[0], p);
    storeWord<std::endian::big>(block[1], p + 4);
  }
  template <std::size_t N>
  void encryptBlocks(Block* blocks) const noexcept;
  template <std::size_t N>
  void decryptBlocks(Block* blocks) const noexcept;

  std::array<Rounds, Passes> encrypt_{};
  std::array<Rounds, Passes> decrypt_{};
};

}  // namespace des

/// DES (FIPS 46-3). Its time depends on key and data through the cache.
using Des = des::Passed<1>;
/// Triple DES (FIPS 46-3, TDEA): encrypt, decrypt, encrypt.
using TripleDes = des::Passed<3>;

extern template class BlockModes<Des, 8>;
extern template class BlockModes<TripleDes, 8>;
extern template class des::Passed<1>;
extern template class des::Passed<3>;

}  // namespace zantrel

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"
#include "core/bytes.h"
#include "crypto/block_modes.h"

namespace zantrel {

/// Twofish (Schneier and others, 1998). Its time depends on key and data through the cache.
class Twofish final : public BlockModes<Twofish, 16> {
 public:
  ~Twofish();
  /// Up to 32 bytes; filled up with zero bytes to 16, 24 or 32, as the cipher's authors define.
  void setKey(ByteSpan key) noexcept;

 private:
  friend class BlockModes<Twofish, 16>;
  using Block = std::array<std::uint32_t, 4>;
  static constexpr std::size_t kLanes = 2;

  static Block load(const std::uint8_t* p) noexcept {
    constexpr auto little = std::endian::little;
    return {loadWord<std::uint32_t, little>(p), loadWord<std::uint32_t, little>(p + 4),
            loadWord<std::uint32_t, little>(p + 8), loadWord<std::uint32_t, little>(p + 12)};
  }
  static void store(const Block& block, std::uint8_t* p) noexcept {
    for (std::size_t i = 0; i < block.size(); ++i)
      storeWord<std::endian::little>(block[i], p + 4 * i);
  }
  std::uint32_t g(std::uint32_t word) const noexcept;
  std::uint32_t gRotated(std::uint32_t word) const noexcept;
  template <std::size_t Half, std::size_t N>
  void encryptRound(Block* blocks, const std::uint32_t* keys) const noexcept;
  template <std::size_t Half, std::size_t N>
  void decryptRound(Block* blocks, const std::uint32_t* keys) const noexcept;
  template <std::size_t N>
  void encryptBlocks(Block* blocks) const noexcept;
  template <std::size_t N>
  void decryptBlocks(Block* blocks) const noexcept;

  std::array<std::uint32_t, 40> subkeys_{};
  std::array<std::array<std::uint32_t, 256>, 4> boxes_{};  ///< keyed, joined with the MDS matrix
};

extern template class BlockModes<Twofish, 16>;

}  // namespace zantrel

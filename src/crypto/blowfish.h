#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/byte_order.h"
#include "core/bytes.h"
#include "crypto/block_modes.h"

namespace zantrel {

/// Blowfish (Schneier, 1993). Its time depends on key and data through the cache.
class Blowfish final : public BlockModes<Blowfish, 8> {
 public:
  using Subkeys = std::array<std::uint32_t, 18>;
  using Boxes = std::array<std::array<std::uint32_t, 256>, 4>;

  ~Blowfish();
  /// 1 to 72 bytes. The cipher's author allows 56; further bytes do reach the subkeys.
  void setKey(ByteSpan key) noexcept;

 private:
  friend class BlockModes<Blowfish, 8>;
  using Block = std::array<std::uint32_t, 2>;
  static constexpr std::size_t kLanes = 4;

  static Block load(const std::uint8_t* p) noexcept {
    return {loadWord<std::uint32_t, std::endian::big>(p),
            loadWord<std::uint32_t, std::endian::big>(p + 4)};
  }
  static void store(const Block& block, std::uint8_t* p) noexcept {
    storeWord<std::endian::big>(block[0], p);
    storeWord<std::endian::big>(block[1], p + 4);
  }
  std::uint32_t mix(std::uint32_t half) const noexcept;
  template <std::size_t N>
  void encryptBlocks(Block* blocks) const noexcept;
  template <std::size_t N>
  void decryptBlocks(Block* blocks) const noexcept;

  static const Subkeys kInitialSubkeys;
  static const Boxes kInitialBoxes;

  Subkeys subkeys_{};
  Boxes boxes_{};
};

extern template class BlockModes<Blowfish, 8>;

}  // namespace zantrel

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/bytes.h"
#include "crypto/block_modes.h"

namespace zantrel {

/// RC2 (RFC 2268). Its time does not depend on the data but for the four keyed look-ups of a block.
class Rc2 final : public BlockModes<Rc2, 8> {
 public:
  ~Rc2();
  /// 1 to 128 bytes, of which 1 to 1024 bits are effective; numbers outside are taken as the
  /// nearest.
  void setKey(ByteSpan key, int effectiveBits) noexcept;

 private:
  friend class BlockModes<Rc2, 8>;
  using Block = std::array<std::uint16_t, 4>;
  static constexpr std::size_t kLanes = 16;

  static Block load(const std::uint8_t* p) noexcept {
    const auto word = [p](std::size_t i) {
      return static_cast<std::uint16_t>(p[2 * i] | (p[2 * i + 1] << 8));
    };
    return {word(0), word(1), word(2), word(3)};
  }
  static void store(const Block& block, std::uint8_t* p) noexcept {
    for (std::size_t i = 0; i < block.size(); ++i) {
      p[2 * i] = static_cast<std::uint8_t>(block[i]);
      p[2 * i + 1] = static_cast<std::uint8_t>(block[i] >> 8);
    }
  }
  template <std::size_t N>
  void encryptBlocks(Block* blocks) const noexcept;
  template <std::size_t N>
  void decryptBlocks(Block* blocks) const noexcept;

  std::array<std::uint16_t, 64> words_{};
};

extern template class BlockModes<Rc2, 8>;

}  // namespace zantrel

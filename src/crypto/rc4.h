#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/bytes.h"

namespace zantrel {

/// The stream cipher RC4. Encryption and decryption are the same operation. Broken: for old data.
class Rc4 final {
 public:
  ~Rc4();
  /// 1 to 256 bytes.
  void setKey(ByteSpan key) noexcept;
  /// Continues the key stream. Output may lie exactly over the input.
  void apply(const std::uint8_t* in, std::uint8_t* out, std::size_t size) noexcept;

 private:
  std::array<std::uint32_t, 256>
      state_{};  ///< whole words: byte stores delay the loads behind them
  std::uint32_t i_ = 0;
  std::uint32_t j_ = 0;
};

}  // namespace zantrel

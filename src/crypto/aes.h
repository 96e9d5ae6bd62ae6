#pragma once

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"
#include "crypto/aes_kernels.h"

namespace zantrel {

/// AES (FIPS 197). Its time does not depend on key or data on any path. Output may lie exactly over
/// the input; `chain` as in BlockModes.
class Aes final {
 public:
  static constexpr std::size_t kBlockSize = aes::kBlockSize;

  Aes() noexcept;
  ~Aes();
  Aes(const Aes&) = default;
  Aes& operator=(const Aes&) = default;

  /// 16, 24 or 32 bytes. Picks the implementation for the processor features in force.
  void setKey(ByteSpan key) noexcept;

  void ecbEncrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) const noexcept {
    kernels_->ecbEncrypt(keys_, in, out, blocks);
  }
  void ecbDecrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) const noexcept {
    kernels_->ecbDecrypt(keys_, in, out, blocks);
  }
  void cbcEncrypt(std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                  std::size_t blocks) const noexcept {
    kernels_->cbcEncrypt(keys_, chain, in, out, blocks);
  }
  void cbcDecrypt(std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                  std::size_t blocks) const noexcept {
    kernels_->cbcDecrypt(keys_, chain, in, out, blocks);
  }

 private:
  const aes::Kernels* kernels_;
  aes::Schedule keys_;
};

}  // namespace zantrel

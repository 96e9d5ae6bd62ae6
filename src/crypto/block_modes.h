#pragma once
// ECB and CBC for every cipher whose block is a few words. The bodies are in block_modes_impl.h,
// which only the ciphers' own source files include.

#include <cstddef>
#include <cstdint>

namespace zantrel {

/// Output may lie exactly over the input. `chain` is the block before the first one, the IV at the
/// start of a message; it becomes the last block of ciphertext, so that calls continue each other.
template <class Cipher, std::size_t BlockSize>
class BlockModes {
 public:
  static constexpr std::size_t kBlockSize = BlockSize;

  void ecbEncrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) const noexcept;
  void ecbDecrypt(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) const noexcept;
  void cbcEncrypt(std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                  std::size_t blocks) const noexcept;
  void cbcDecrypt(std::uint8_t* chain, const std::uint8_t* in, std::uint8_t* out,
                  std::size_t blocks) const noexcept;

 protected:
  BlockModes() = default;
  ~BlockModes() = default;

 private:
  const Cipher& cipher() const noexcept { return static_cast<const Cipher&>(*this); }
};

}  // namespace zantrel

#pragma once
// MD2 (RFC 1319, with its erratum: the checksum is added to, not replaced). Legacy.

#include <array>
#include <cstddef>
#include <cstdint>

#include "crypto/digest.h"

namespace zantrel {

class Md2State final {
 public:
  static constexpr std::size_t kBlockBytes = 16;
  static constexpr std::size_t kMaxDigestBytes = 16;
  static constexpr const char* kAbortText = "Digest MD2 aborted by application";
  static constexpr std::size_t digestBytes() noexcept { return kMaxDigestBytes; }

  void start() noexcept;
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
  void finish(ByteSpan rest, std::uint64_t total, std::uint8_t* out);

 private:
  void mix(const std::uint8_t* block) noexcept;

  std::array<std::uint8_t, 16> chain_;
  std::array<std::uint8_t, 16> checksum_;
};

class Md2 final : public Digest<Md2State> {};

}  // namespace zantrel

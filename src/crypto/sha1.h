#pragma once
// SHA-1 (FIPS 180-4). Legacy: collisions have been made.

#include "crypto/digest.h"

namespace zantrel {

class Sha1State final : public WordState<Sha1State, std::uint32_t, 5, 64, 20, std::endian::big> {
 public:
  static constexpr const char* kAbortText = "Digest SHA-1 aborted by application";
  static constexpr std::array<std::uint32_t, 5> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476, 0xC3D2E1F0};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
  void compress(const std::uint8_t* blocks, std::size_t count, const std::uint8_t* last,
                std::size_t lastCount) noexcept;
};

class Sha1 final : public Digest<Sha1State> {};

}  // namespace zantrel

#pragma once
// MD4 (RFC 1320). Legacy: collisions take no effort; for old data and protocols only.

#include "crypto/digest.h"

namespace zantrel {

class Md4State final : public WordState<Md4State, std::uint32_t, 4, 64, 16, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest MD4 aborted by application";
  static constexpr std::array<std::uint32_t, 4> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Md4 final : public Digest<Md4State> {};

}  // namespace zantrel

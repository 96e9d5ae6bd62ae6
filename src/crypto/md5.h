#pragma once
// MD5 (RFC 1321). Legacy: collisions are easy to make; for old data and protocols only.

#include "crypto/digest.h"

namespace zantrel {

class Md5State final : public WordState<Md5State, std::uint32_t, 4, 64, 16, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest MD5 aborted by application";
  static constexpr std::array<std::uint32_t, 4> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Md5 final : public Digest<Md5State> {};

}  // namespace zantrel

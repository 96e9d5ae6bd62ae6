#pragma once
// RIPEMD-128, -160, -256 and -320 (H. Dobbertin, A. Bosselaers, B. Preneel, "RIPEMD-160: A
// Strengthened Version of RIPEMD", 1996, and its page of extensions). RIPEMD-160 is the one still
// of use; the double-length forms are no stronger than their halves.

#include "crypto/digest.h"

namespace zantrel {

class Ripemd128State final
    : public WordState<Ripemd128State, std::uint32_t, 4, 64, 16, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest RIPEMD-128 aborted by application";
  static constexpr std::array<std::uint32_t, 4> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Ripemd160State final
    : public WordState<Ripemd160State, std::uint32_t, 5, 64, 20, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest RIPEMD-160 aborted by application";
  static constexpr std::array<std::uint32_t, 5> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476, 0xC3D2E1F0};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Ripemd256State final
    : public WordState<Ripemd256State, std::uint32_t, 8, 64, 32, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest RIPEMD-256 aborted by application";
  static constexpr std::array<std::uint32_t, 8> kInitial = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                            0x10325476, 0x76543210, 0xFEDCBA98,
                                                            0x89ABCDEF, 0x01234567};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Ripemd320State final
    : public WordState<Ripemd320State, std::uint32_t, 10, 64, 40, std::endian::little> {
 public:
  static constexpr const char* kAbortText = "Digest RIPEMD-320 aborted by application";
  static constexpr std::array<std::uint32_t, 10> kInitial = {
      0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0,
      0x76543210, 0xFEDCBA98, 0x89ABCDEF, 0x01234567, 0x3C2D1E0F};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
};

class Ripemd128 final : public Digest<Ripemd128State> {};
class Ripemd160 final : public Digest<Ripemd160State> {};
class Ripemd256 final : public Digest<Ripemd256State> {};
class Ripemd320 final : public Digest<Ripemd320State> {};

}  // namespace zantrel

#pragma once
// Which bytes of a secret key, and of an IV, a cipher takes. Keys of any size are accepted: a short
// one is filled up with zero bytes and a long one cut, silently (deliberate: old data depends on
// it).

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/bytes.h"
#include "platform/secure_wipe.h"

namespace zantrel {

/// The numbers by which applications and old settings know the ciphers.
enum class CipherId : int {
  aes = 2,
  blowfish = 3,
  twofish = 4,
  blowfish2 = 6,  ///< the same cipher as `blowfish`
  des = 7,        ///< single or triple, as the key length says
  rc2 = 8,
  rc4 = 9,
};

/// Bytes that leave no trace in memory.
template <std::size_t Capacity>
struct SecretBytes {
  std::array<std::uint8_t, Capacity> bytes{};
  std::size_t size = 0;

  SecretBytes() = default;
  SecretBytes(const SecretBytes&) = default;
  SecretBytes& operator=(const SecretBytes&) = default;
  ~SecretBytes() { secureWipe(bytes.data(), bytes.size()); }
  ByteSpan span() const { return {bytes.data(), size}; }
};

using CipherKey = SecretBytes<256>;
using CipherIv = std::array<std::uint8_t, 16>;

/// 0 for a number that is none of the ciphers.
std::size_t cipherBlockSize(CipherId id) noexcept;

/// How many bytes of key `keyLength` bits mean: for AES 16 up to 128 bits, 24 up to 192, else 32;
/// for DES 8 below 112 bits, 16 below 168, else 24; for the others a byte for each whole eight
/// bits, at least one and at most what the cipher takes (Twofish 32, Blowfish 72, RC2 128, RC4
/// 256).
std::size_t cipherKeySize(CipherId id, int keyLength) noexcept;

/// The first bytes of `secret`, filled up with zero bytes.
CipherKey cipherKey(CipherId id, int keyLength, ByteSpan secret) noexcept;

/// The first 16 bytes of `iv`, filled up with zero bytes; a cipher takes a block of them.
CipherIv cipherIv(ByteSpan iv) noexcept;

}  // namespace zantrel

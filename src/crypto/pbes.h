#pragma once
// Encryption with a password: PBES1 and PBES2 (RFC 8018, sections 6.1 and 6.2).
//
// Mode and padding are the standard's, CBC with counted padding, whatever the cipher settings say.
// PBES1 derives key and IV by PBKDF1 and takes DES or RC2 with 64 bits. PBES2 derives the key by
// PBKDF2 with HMAC over the hash, takes the IV from the settings, and any cipher.

#include "core/bytes.h"
#include "crypto/cipher_stream.h"
#include "crypto/hash.h"

namespace zantrel {

class DataBuffer;
class LogBase;

enum class PbesScheme { pbes1, pbes2 };

struct PbesSettings {
  PbesScheme scheme = PbesScheme::pbes2;
  int hashId = kHashSha1;
  CipherSettings cipher;  ///< its key does not count, nor with PBES1 its IV and key lengths
  ByteSpan password;
  ByteSpan salt;
  int iterations = 1024;
};

/// What a password becomes: settings of the cipher that encrypts. Wipes itself.
class PbesKey final {
 public:
  PbesKey() = default;
  PbesKey(const PbesKey&) = delete;
  PbesKey& operator=(const PbesKey&) = delete;

  /// False, the reason being logged, where the scheme lacks the cipher or the hash is too short for
  /// it, and for fewer than one iteration. An IV of PBES2 is borrowed.
  bool derive(const PbesSettings& settings, LogBase& log);
  /// Valid as long as this object.
  const CipherSettings& cipher() const noexcept { return cipher_; }

 private:
  bool deriveKeyAndIv(const PbesSettings& settings, LogBase& log);

  CipherSettings cipher_;
  CipherKey derived_;
};

/// Append the result. An empty text results in nothing.
bool pbesEncrypt(const PbesSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log);
bool pbesDecrypt(const PbesSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log);

}  // namespace zantrel

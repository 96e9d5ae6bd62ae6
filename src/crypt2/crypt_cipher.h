#pragma once

#include <string_view>

#include "crypt2/crypt_names.h"
#include "crypto/pbes.h"

namespace zantrel {

class DataBuffer;
class LogBase;

/// An encryption as the settings of a moment choose it. Borrows the settings' bytes.
struct CryptChoice {
  CryptAlgorithm algorithm;
  int mode = kModeCbc;
  bool hasIv = false;
  CipherSettings cipher;  ///< lengths, padding, key and IV; the cipher itself is set by begin()
  std::string_view pbesAlgorithm;
  ByteSpan pbesPassword;
  ByteSpan salt;
  int iterations = 1024;
  int hashId = kHashSha1;

  bool isPbes() const noexcept {
    return algorithm.id == kCryptPbes1 || algorithm.id == kCryptPbes2;
  }
  /// Whether one of the ciphers runs on the secret key.
  bool isKeyed() const noexcept { return algorithm.blockSize() != 0; }
};

/// An encryption or decryption under way, whatever the algorithm. Results are appended, and pieces
/// give what the whole gives at once. After a failure, which is logged, it is over.
class CryptCipher final {
 public:
  /// Starts afresh. An algorithm without a secret key is only prepared when there is data for it:
  /// nothing becomes nothing, whatever its settings.
  bool begin(const CryptChoice& choice, CipherDirection direction, bool hasData, LogBase& log);
  bool update(ByteSpan in, DataBuffer& out, LogBase& log);
  bool finish(ByteSpan in, DataBuffer& out, LogBase& log);

 private:
  bool beginPbes(const CryptChoice& choice, CipherDirection direction, LogBase& log);
  bool pass(ByteSpan in, DataBuffer& out, LogBase& log);

  CipherStream stream_;
  bool passes_ = false;  ///< the data stay as they are
};

/// The cipher that LastAlgorithm names.
const char* lastAlgorithmName(int cryptId) noexcept;

/// "algorithm" and what goes with it.
void logAlgorithm(const CryptChoice& choice, LogBase& log);

/// Says where the settings mean less than they seem to. Decryption hears only of what it may have
/// been given wrongly.
void logWeakSettings(const CryptChoice& choice, CipherDirection direction, LogBase& log);

}  // namespace zantrel

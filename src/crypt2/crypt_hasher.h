#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "core/bytes.h"
#include "core/secret.h"
#include "crypto/digest_context.h"
#include "crypto/hmac.h"

namespace zantrel {

class DataSource;
class LogBase;
class ProgressMonitor;

/// A digest as the settings of a moment choose it.
struct DigestChoice {
  int hashId;
  int havalBits;  ///< any value: what is legal below it is used
  int havalPasses;
};

/// What hashing and authentication keep between two calls: the digests under way, one for each
/// family of algorithms, and the key with the states that were made of it.
class CryptHasher final {
 public:
  /// Starts a digest, dropping the one of the same family that was under way.
  void begin(const DigestChoice& choice);
  /// Whether a digest of this algorithm's family is under way.
  bool isUnderWay(int hashId) const { return family(hashId).has_value(); }
  /// Absorbs bytes into the digest under way; nothing happens when there is none.
  void more(int hashId, ByteSpan bytes);
  /// Appends the digest and forgets it; nothing happens when none is under way. SHA-2 gives the
  /// digest that was begun, whatever the number has become since.
  void final(int hashId, DataBuffer& out);
  void discard(int hashId) { family(hashId).reset(); }

  bool setHmacKey(ByteSpan key);
  /// Appends the authentication code of bytes under the key.
  void hmac(ByteSpan bytes, int hashId, DataBuffer& out);

 private:
  std::optional<DigestContext>& family(int hashId) {
    return underWay_[DigestContext::familyOf(hashId)];
  }
  const std::optional<DigestContext>& family(int hashId) const {
    return underWay_[DigestContext::familyOf(hashId)];
  }

  std::array<std::optional<DigestContext>, DigestContext::kFamilies> underWay_;
  SecretBuffer hmacKey_;
  std::optional<HmacKey> keyed_;  ///< made of hmacKey_ for keyedFor_
  int keyedFor_ = 0;
};

/// Appends the digest of bytes.
void hashBytes(const DigestChoice& choice, ByteSpan bytes, DataBuffer& out);
/// Appends the digest of all that a source yields. False, the reason being logged, when reading
/// failed or the monitor asked to stop.
bool hashSource(const DigestChoice& choice, DataSource& source, ProgressMonitor& progress,
                LogBase& log, DataBuffer& out);

}  // namespace zantrel

#include "crypto/pbes.h"

#include "core/log_base.h"
#include "crypto/pbkdf.h"

namespace zantrel {

bool PbesKey::derive(const PbesSettings& settings, LogBase& log) {
  cipher_ = settings.cipher;
  cipher_.ecb = false;
  cipher_.padding = kPaddingCounted;
  if (settings.scheme == PbesScheme::pbes1) return deriveKeyAndIv(settings, log);

  derived_.size = cipherKeySize(cipher_.id, cipher_.keyLength);
  cipher_.key = derived_.span();
  return pbkdf2(settings.hashId, settings.password, settings.salt, settings.iterations,
                {derived_.bytes.data(), derived_.size}, log);
}

bool PbesKey::deriveKeyAndIv(const PbesSettings& settings, LogBase& log) {
  constexpr std::size_t kHalf = 8;
  if (cipher_.id != CipherId::des && cipher_.id != CipherId::rc2) {
    log.logError("PBES1 encrypts with DES or RC2 only.");
    return false;
  }
  derived_.size = 2 * kHalf;
  cipher_.keyLength = cipher_.effectiveKeyBits = 8 * kHalf;
  cipher_.key = derived_.span().first(kHalf);
  cipher_.iv = derived_.span().last(kHalf);
  return pbkdf1(settings.hashId, settings.password, settings.salt, settings.iterations,
                {derived_.bytes.data(), derived_.size}, log);
}

bool pbesEncrypt(const PbesSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log) {
  PbesKey key;
  return key.derive(settings, log) && encryptBytes(key.cipher(), in, out, log);
}

bool pbesDecrypt(const PbesSettings& settings, ByteSpan in, DataBuffer& out, LogBase& log) {
  PbesKey key;
  return key.derive(settings, log) && decryptBytes(key.cipher(), in, out, log);
}

}  // namespace zantrel

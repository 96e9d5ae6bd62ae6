// What a log says about settings that mean less than they seem to: names that became something
// else, keys and IVs of other sizes than the cipher takes, modes and ciphers that hide little.

#include "core/log_base.h"
#include "crypt2/crypt_cipher.h"

namespace zantrel {
namespace {

void logNames(const CryptChoice& choice, LogBase& log) {
  if (!choice.algorithm.known)
    log.logInfo("CryptAlgorithm was set to an unknown name, which means aes.");
  if (choice.isPbes() && !CryptAlgorithm::of(choice.pbesAlgorithm).known)
    log.logInfo("PbesAlgorithm is an unknown name, which means aes.");
}

void logPbesHash(const CryptChoice& choice, LogBase& log) {
  const HashAlgorithm& hash = *findHashAlgorithm(choice.hashId);
  if (hash.inDispatcher) return;
  log.logInfo("Keys are not derived with this HashAlgorithm: SHA-1 took its place.");
  log.logData("hashAlgorithm", hash.printedName);
}

void logKeySize(const CryptChoice& choice, LogBase& log) {
  const std::size_t given = choice.cipher.key.size();
  const auto id = static_cast<CipherId>(choice.algorithm.id);
  const std::size_t taken = cipherKeySize(id, choice.cipher.keyLength);
  if (given == taken) return;
  log.logInfo(given < taken
                  ? "The secret key is shorter than KeyLength says: zero bytes fill it up."
                  : "The secret key is longer than KeyLength says: the rest of it is not used.");
  log.logData64("secretKeyBytes", static_cast<std::int64_t>(given));
  log.logData64("cipherKeyBytes", static_cast<std::int64_t>(taken));
}

void logIv(const CryptChoice& choice, std::size_t block, LogBase& log) {
  if (!choice.hasIv)
    log.logInfo("No IV is set: it is all zeros, so that texts with equal beginnings show it.");
  else if (choice.cipher.iv.size() < block)
    log.logInfo("The IV is shorter than a block: zero bytes fill it up.");
}

void logMode(const CryptChoice& choice, CipherDirection direction, LogBase& log) {
  if (choice.mode == kModeCfb) log.logInfo("The mode CFB is computed as CBC.");
  if (choice.mode == kModeEcb && direction == CipherDirection::encrypt)
    log.logInfo("The mode is ECB, as with any unknown name: equal blocks of data remain equal.");
}

bool isBroken(int cryptId) {
  return cryptId == kCryptDes || cryptId == kCryptRc2 || cryptId == kCryptRc4;
}

}  // namespace

void logWeakSettings(const CryptChoice& choice, CipherDirection direction, LogBase& log) {
  logNames(choice, log);
  if (choice.isPbes()) logPbesHash(choice, log);
  if (choice.isKeyed()) {
    logKeySize(choice, log);
    if (choice.algorithm.blockSize() > 1) logMode(choice, direction, log);
  }
  const CryptAlgorithm cipher =
      choice.isPbes() ? CryptAlgorithm::of(choice.pbesAlgorithm) : choice.algorithm;
  const bool chained =
      choice.isKeyed() ? choice.mode != kModeEcb : choice.algorithm.id == kCryptPbes2;
  if (chained && cipher.blockSize() > 1)
    logIv(choice, static_cast<std::size_t>(cipher.blockSize()), log);
  if (direction == CipherDirection::encrypt && isBroken(cipher.id))
    log.logInfo("This cipher is for old data only: new data should be encrypted with aes.");
}

}  // namespace zantrel

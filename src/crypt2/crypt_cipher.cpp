#include "crypt2/crypt_cipher.h"

#include "core/data_buffer.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

/// Names by number: as LastAlgorithm and as logs give them.
struct Naming {
  const char* last;
  const char* logged;
};

constexpr Naming kNamings[] = {{"", ""},
                               {"pki", "pki"},
                               {"rijndael", "aes"},
                               {"blowfish", "blowfish"},
                               {"twofish", "twofish"},
                               {"none", "none"},
                               {"blowfish2", "blowfish2"},
                               {"des", "des"},
                               {"rc2", "rc2"},
                               {"rc4", "rc4"},
                               {"pbes1", "pbes1"},
                               {"pbes2", "pbes2"}};

const char* loggedName(const CryptChoice& choice) {
  // Deliberate: up to 111 bits a log says "3des" though it is DES that runs.
  if (choice.algorithm.id == kCryptDes && choice.cipher.keyLength > 64) return "3des";
  return kNamings[choice.algorithm.id].logged;
}

/// Nothing is known of certificates: no algorithm "pki" can find one.
bool failWithoutCertificate(CipherDirection direction, LogBase& log) {
  if (direction == CipherDirection::encrypt)
    log.logError("No encryption certificates were specified.");
  else
    log.logError("Decrypt certificate is null");
  return false;
}

}  // namespace

bool CryptCipher::begin(const CryptChoice& choice, CipherDirection direction, bool hasData,
                        LogBase& log) {
  stream_.reset();
  passes_ = choice.algorithm.id == kCryptNone || (!choice.isKeyed() && !hasData);
  if (passes_) return true;
  if (choice.algorithm.id == kCryptPki) return failWithoutCertificate(direction, log);
  if (choice.isPbes()) return beginPbes(choice, direction, log);
  CipherSettings settings = choice.cipher;
  settings.id = static_cast<CipherId>(choice.algorithm.id);
  settings.ecb = choice.mode == kModeEcb;
  return stream_.begin(settings, direction, log);
}

bool CryptCipher::beginPbes(const CryptChoice& choice, CipherDirection direction, LogBase& log) {
  const CryptAlgorithm algorithm = CryptAlgorithm::of(choice.pbesAlgorithm);
  if (algorithm.blockSize() == 0) {
    log.logError("Unrecognized encryption method");
    return false;
  }
  PbesSettings settings;
  settings.scheme = choice.algorithm.id == kCryptPbes1 ? PbesScheme::pbes1 : PbesScheme::pbes2;
  settings.hashId = choice.hashId;
  settings.cipher = choice.cipher;
  settings.cipher.id = static_cast<CipherId>(algorithm.id);
  settings.password = choice.pbesPassword;
  settings.salt = choice.salt;
  settings.iterations = choice.iterations;
  PbesKey key;
  return key.derive(settings, log) && stream_.begin(key.cipher(), direction, log);
}

bool CryptCipher::update(ByteSpan in, DataBuffer& out, LogBase& log) {
  return passes_ ? pass(in, out, log) : stream_.update(in, out, log);
}

bool CryptCipher::finish(ByteSpan in, DataBuffer& out, LogBase& log) {
  return passes_ ? pass(in, out, log) : stream_.finish(in, out, log);
}

bool CryptCipher::pass(ByteSpan in, DataBuffer& out, LogBase& log) {
  if (out.reserve(in.size()) && out.append(in)) return true;
  log.logError("Not enough memory.");
  return false;
}

const char* lastAlgorithmName(int cryptId) noexcept {
  return kNamings[cryptId].last;
}

void logAlgorithm(const CryptChoice& choice, LogBase& log) {
  log.logData("algorithm", loggedName(choice));
  if (choice.isPbes())
    log.logData("pbesAlgorithm", CryptAlgorithm::of(choice.pbesAlgorithm).name.c_str());
  else if (choice.isKeyed())
    log.logDataLong("keyLength", choice.cipher.keyLength);
}

}  // namespace zantrel

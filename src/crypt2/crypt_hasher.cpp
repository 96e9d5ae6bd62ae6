#include "crypt2/crypt_hasher.h"

#include "crypto/hash.h"
#include "crypto/hashing.h"

namespace zantrel {
namespace {

DigestContext contextOf(const DigestChoice& choice) {
  return DigestContext(choice.hashId, choice.havalBits, choice.havalPasses);
}

}  // namespace

void CryptHasher::begin(const DigestChoice& choice) {
  family(choice.hashId) = contextOf(choice);
}

void CryptHasher::more(int hashId, ByteSpan bytes) {
  if (std::optional<DigestContext>& context = family(hashId)) context->update(bytes);
}

void CryptHasher::final(int hashId, DataBuffer& out) {
  if (std::optional<DigestContext>& context = family(hashId)) context->finalize(out);
  discard(hashId);
}

bool CryptHasher::setHmacKey(ByteSpan key) {
  keyed_.reset();
  return hmacKey_.set(key);
}

void CryptHasher::hmac(ByteSpan bytes, int hashId, DataBuffer& out) {
  if (!keyed_ || keyedFor_ != hashId) {
    keyed_.emplace(hmacKey_.bytes(), hashId);
    keyedFor_ = hashId;
  }
  std::uint8_t mac[kMaxDigestBytes];
  keyed_->mac(bytes, mac);
  out.append(mac, keyed_->macBytes());
  wipeLocal(mac);
}

void hashBytes(const DigestChoice& choice, ByteSpan bytes, DataBuffer& out) {
  contextOf(choice).digestData(bytes, out);
}

bool hashSource(const DigestChoice& choice, DataSource& source, ProgressMonitor& progress,
                LogBase& log, DataBuffer& out) {
  switch (choice.hashId) {
    case kHashSha1:
      return Hashing::hashSourceWithProvider(Hashing::kCalgSha1, source, &progress, log, out);
    case kHashMd2:
      return Hashing::hashSourceWithProvider(Hashing::kCalgMd2, source, &progress, log, out);
    default:
      return contextOf(choice).digestSource(source, &progress, log, out);
  }
}

}  // namespace zantrel

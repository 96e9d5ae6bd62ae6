#include "crypto/digest_context.h"

#include "crypto/hash.h"

namespace zantrel {

DigestContext::DigestContext(int hashId, int havalBits, int havalPasses)
    : digest_(make(hashId, havalBits, havalPasses)) {}

std::size_t DigestContext::familyOf(int hashId) noexcept {
  return make(hashId, Haval2::kDefaultBits, Haval2::kDefaultPasses).index();
}

DigestContext::Any DigestContext::make(int hashId, int havalBits, int havalPasses) {
  switch (hashId) {
    case kHashSha256:
      return Sha2(Sha2::Variant::kSha256);
    case kHashSha384:
      return Sha2(Sha2::Variant::kSha384);
    case kHashSha512:
      return Sha2(Sha2::Variant::kSha512);
    case kHashMd2:
      return Md2();
    case kHashMd4:
      return Md4();
    case kHashMd5:
      return Md5();
    case kHashHaval:
      return Haval2(havalBits, havalPasses);
    case kHashRipemd128:
      return Ripemd128();
    case kHashRipemd160:
      return Ripemd160();
    case kHashRipemd256:
      return Ripemd256();
    case kHashRipemd320:
      return Ripemd320();
    default:
      return Sha1();
  }
}

}  // namespace zantrel

#include "crypto/hash.h"

#include <algorithm>
#include <string>

#include "core/ascii_text.h"
#include "crypto/haval2.h"
#include "crypto/md2.h"
#include "crypto/md4.h"
#include "crypto/md5.h"
#include "crypto/ripemd.h"
#include "crypto/sha1.h"
#include "crypto/sha2.h"

namespace zantrel {
namespace {

template <class State>
void digestOf(ByteSpan bytes, std::uint8_t* out) {
  BlockHash<State>::digest(bytes, out);
}

// RFC 8017, appendix B.1.
constexpr std::uint32_t kOidSha1[] = {1, 3, 14, 3, 2, 26};
constexpr std::uint32_t kOidMd2[] = {1, 2, 840, 113549, 2, 2};
constexpr std::uint32_t kOidMd5[] = {1, 2, 840, 113549, 2, 5};
constexpr std::uint32_t kOidSha256[] = {2, 16, 840, 1, 101, 3, 4, 2, 1};
constexpr std::uint32_t kOidSha384[] = {2, 16, 840, 1, 101, 3, 4, 2, 2};
constexpr std::uint32_t kOidSha512[] = {2, 16, 840, 1, 101, 3, 4, 2, 3};

template <class State>
constexpr HashAlgorithm row(int id, std::string_view name, const char* printedName,
                            std::span<const std::uint32_t> oid = {}) {
  return {id,  name,         printedName,    State::kMaxDigestBytes, State::kBlockBytes,
          oid, !oid.empty(), digestOf<State>};
}

constexpr HashAlgorithm kAlgorithms[] = {
    row<Sha1State>(kHashSha1, "sha1", "SHA-1", kOidSha1),
    row<Sha256State>(kHashSha256, "sha256", "SHA-256", kOidSha256),
    row<Sha384State>(kHashSha384, "sha384", "SHA-384", kOidSha384),
    row<Sha512State>(kHashSha512, "sha512", "SHA-512", kOidSha512),
    row<Md2State>(kHashMd2, "md2", "MD2", kOidMd2),
    row<Md4State>(kHashMd4, "md4", "MD4"),
    row<Md5State>(kHashMd5, "md5", "MD5", kOidMd5),
    row<Ripemd128State>(kHashRipemd128, "ripemd128", "RIPEMD-128"),
    row<Ripemd160State>(kHashRipemd160, "ripemd160", "RIPEMD-160"),
    row<Ripemd256State>(kHashRipemd256, "ripemd256", "RIPEMD-256"),
    row<Ripemd320State>(kHashRipemd320, "ripemd320", "RIPEMD-320"),
    row<HavalState>(kHashHaval, "haval", "HAVAL")};

/// The row that doHash uses for a number: SHA-1's unless it computes the algorithm itself.
const HashAlgorithm* findDispatched(int hashId) noexcept {
  const HashAlgorithm* const found = findHashAlgorithm(hashId);
  return found != nullptr && found->inDispatcher ? found : nullptr;
}

}  // namespace

std::span<const HashAlgorithm> hashAlgorithms() noexcept {
  return kAlgorithms;
}

const HashAlgorithm* findHashAlgorithm(int hashId) noexcept {
  const auto found = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                                  [hashId](const HashAlgorithm& a) { return a.id == hashId; });
  return found != std::end(kAlgorithms) ? found : nullptr;
}

const HashAlgorithm* findHashAlgorithm(std::string_view name) noexcept {
  const auto found = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                                  [name](const HashAlgorithm& a) { return a.name == name; });
  return found != std::end(kAlgorithms) ? found : nullptr;
}

void Hash::doHash(const void* bytes, std::size_t length, int hashId, DataBuffer& out) {
  const HashAlgorithm* const known = findDispatched(hashId);
  const HashAlgorithm& algorithm = known != nullptr ? *known : kAlgorithms[0];
  // The bytes may be those of `out`, so that it is cleared after the work.
  std::uint8_t digest[kMaxDigestBytes];
  algorithm.digest({static_cast<const std::uint8_t*>(bytes), bytes != nullptr ? length : 0},
                   digest);
  out.clear();
  out.append(digest, algorithm.digestBytes);
  wipeLocal(digest);  // it may serve as a key
}

std::size_t Hash::hashLen(int hashId) noexcept {
  // Not the fallback algorithm's length: deliberate, protocols rely on the known numbers only.
  constexpr std::size_t kUnknown = 16;
  const HashAlgorithm* const known = findDispatched(hashId);
  return known != nullptr ? known->digestBytes : kUnknown;
}

int Hash::hashIdFromName(std::string_view name) {
  std::string plain;
  for (const char c : name) {
    if (c == ' ' || c == '\t' || c == '-') continue;
    plain += asciiLower(c);
  }
  constexpr std::string_view kWord = "digest";
  std::string bare;
  for (std::size_t i = 0; i < plain.size();) {
    if (plain.compare(i, kWord.size(), kWord) == 0) {
      i += kWord.size();
    } else {
      bare += plain[i++];
    }
  }
  for (const int id : {kHashSha1, kHashMd2, kHashMd5, kHashSha256, kHashSha384, kHashSha512}) {
    if (bare.find(findHashAlgorithm(id)->name) != bare.npos) return id;
  }
  return kHashSha1;
}

void Hash::hashNameFromId(int hashId, StringBuffer& out) {
  const HashAlgorithm* const known = findDispatched(hashId);
  out.clear();
  out.append(known != nullptr ? known->printedName : "Unknown");
}

bool Hash::digestOid(int hashId, ExtIntArray& out) {
  const HashAlgorithm* const known = findDispatched(hashId);
  out.removeAll();
  if (known == nullptr) return false;
  for (const std::uint32_t arc : known->oid) out.append(static_cast<std::int32_t>(arc));
  return true;
}

}  // namespace zantrel

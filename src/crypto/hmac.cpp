#include "crypto/hmac.h"

#include <algorithm>
#include <cstring>

#include "crypto/hash.h"
#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

constexpr std::size_t kMaxPadBytes = 128;

ByteSpan span(const void* bytes, std::size_t length) noexcept {
  return {static_cast<const std::uint8_t*>(bytes), bytes != nullptr ? length : 0};
}

}  // namespace

template <class State>
void HmacKey::start(ByteSpan key, std::size_t padBytes) {
  auto& pads = pads_.template emplace<Pads<State>>();
  std::uint8_t pad[kMaxPadBytes] = {};
  if (!key.empty()) std::memcpy(pad, key.data(), key.size());
  for (std::uint8_t& byte : pad) byte ^= 0x36;
  pads.inner.update({pad, padBytes});
  for (std::uint8_t& byte : pad) byte ^= 0x36 ^ 0x5C;
  pads.outer.update({pad, padBytes});
  secureWipe(pad, sizeof pad);
}

// 64 bytes for SHA-384 too, whose blocks have 128: deliberate.
HmacKey::HmacKey(ByteSpan key, int hashId)
    : HmacKey(key, hashId, hashId == kHashSha512 ? 128 : 64) {}

HmacKey HmacKey::standard(ByteSpan key, int hashId) {
  const bool wide = hashId == kHashSha384 || hashId == kHashSha512;
  return HmacKey(key, hashId, wide ? 128 : 64);
}

HmacKey::HmacKey(ByteSpan key, int hashId, std::size_t padBytes) {
  DataBuffer shorter;
  if (key.size() > padBytes) {
    Hash::doHash(key.data(), key.size(), hashId, shorter);
    key = shorter.bytes().first(std::min(Hash::hashLen(hashId), padBytes));
  }
  switch (hashId) {
    case kHashSha256:
      start<Sha256State>(key, padBytes);
      break;
    case kHashSha384:
      start<Sha384State>(key, padBytes);
      break;
    case kHashSha512:
      start<Sha512State>(key, padBytes);
      break;
    case kHashMd2:
      start<Md2State>(key, padBytes);
      break;
    case kHashMd5:
      start<Md5State>(key, padBytes);
      break;
    default:  // numbers that Hash::doHash does not know mean SHA-1: deliberate
      start<Sha1State>(key, padBytes);
  }
  shorter.secureClear();
}

std::size_t HmacKey::macBytes() const noexcept {
  return std::visit([](const auto& pads) { return pads.inner.digestBytes(); }, pads_);
}

[[gnu::flatten]] void HmacKey::mac(ByteSpan data, std::uint8_t* out) const {
  std::visit(
      [&](const auto& pads) {
        std::uint8_t inner[kMaxDigestBytes];
        pads.inner.finalizeWith(data, inner);
        pads.outer.finalizeWith({inner, pads.inner.digestBytes()}, out);
        wipeLocal(inner);
      },
      pads_);
}

void Hmac::hmac(const void* data, std::size_t dataLength, const void* key, std::size_t keyLength,
                int hashId, DataBuffer& out) {
  const HmacKey keyed(span(key, keyLength), hashId);
  std::uint8_t mac[kMaxDigestBytes];
  keyed.mac(span(data, dataLength), mac);  // before clearing: the data may be those of `out`
  out.clear();
  out.append(mac, keyed.macBytes());
  wipeLocal(mac);
}

}  // namespace zantrel

#include "crypto/cipher_key.h"

#include <algorithm>

namespace zantrel {

std::size_t cipherBlockSize(CipherId id) noexcept {
  switch (id) {
    case CipherId::aes:
    case CipherId::twofish:
      return 16;
    case CipherId::blowfish:
    case CipherId::blowfish2:
    case CipherId::des:
    case CipherId::rc2:
      return 8;
    case CipherId::rc4:
      return 1;
  }
  return 0;
}

std::size_t cipherKeySize(CipherId id, int keyLength) noexcept {
  const auto whole = [keyLength](std::size_t most) {
    return std::clamp<std::size_t>(static_cast<std::size_t>(std::max(keyLength, 0)) / 8, 1, most);
  };
  switch (id) {
    case CipherId::aes:
      return keyLength <= 128 ? 16 : keyLength <= 192 ? 24 : 32;
    case CipherId::des:
      return keyLength < 112 ? 8 : keyLength < 168 ? 16 : 24;
    case CipherId::twofish:
      return whole(32);
    case CipherId::blowfish:
    case CipherId::blowfish2:
      return whole(72);
    case CipherId::rc2:
      return whole(128);
    case CipherId::rc4:
      return whole(256);
  }
  return 0;
}

CipherKey cipherKey(CipherId id, int keyLength, ByteSpan secret) noexcept {
  CipherKey key;
  key.size = cipherKeySize(id, keyLength);
  std::copy_n(secret.begin(), std::min(secret.size(), key.size), key.bytes.begin());
  return key;
}

CipherIv cipherIv(ByteSpan iv) noexcept {
  CipherIv result{};
  std::copy_n(iv.begin(), std::min(iv.size(), result.size()), result.begin());
  return result;
}

}  // namespace zantrel

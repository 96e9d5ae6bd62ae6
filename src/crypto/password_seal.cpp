#include "crypto/password_seal.h"

#include <array>
#include <cstdint>

#include "core/data_buffer.h"
#include "core/log_base.h"
#include "crypto/cipher_stream.h"
#include "crypto/hash.h"
#include "crypto/hmac.h"
#include "crypto/pbkdf.h"
#include "platform/random.h"

namespace zantrel {
namespace {

constexpr std::uint8_t kVersion = 1;
constexpr int kIterations = 200000;
constexpr std::size_t kSaltBytes = 16;
constexpr std::size_t kIvBytes = 16;
constexpr std::size_t kKeyBytes = 32;
constexpr std::size_t kMacBytes = 32;
constexpr std::size_t kHeadBytes = 1 + kSaltBytes + kIvBytes;

constexpr char kWrong[] = "The password is wrong, or the data was not encrypted in this way.";

using Mac = std::array<std::uint8_t, kMacBytes>;

class Keys {
 public:
  bool derive(ByteSpan password, ByteSpan salt, LogBase& log) {
    if (password.empty()) {
      log.logError("A password is needed.");
      return false;
    }
    return pbkdf2(kHashSha512, password, salt, kIterations, derived_.bytes, log);
  }
  CipherSettings cipher(ByteSpan iv) const {
    CipherSettings settings;
    settings.keyLength = 8 * kKeyBytes;
    settings.key = ByteSpan(derived_.bytes).first(kKeyBytes);
    settings.iv = iv;
    return settings;
  }
  Mac mac(ByteSpan bytes) const {
    Mac mac;
    HmacKey::standard(ByteSpan(derived_.bytes).last(kKeyBytes), kHashSha256).mac(bytes, mac.data());
    return mac;
  }

 private:
  SecretBytes<2 * kKeyBytes> derived_;
};

// In the same time wherever they differ.
bool areEqual(ByteSpan a, ByteSpan b) {
  unsigned difference = 0;
  for (std::size_t i = 0; i < kMacBytes; ++i) difference |= a[i] ^ b[i];
  return difference == 0;
}

bool fail(const char* reason, LogBase& log) {
  log.logError(reason);
  return false;
}

}  // namespace

bool sealWithPassword(ByteSpan in, ByteSpan password, DataBuffer& out, LogBase& log) {
  std::array<std::uint8_t, kHeadBytes> head;
  head[0] = kVersion;
  randomBytes(head.data() + 1, kHeadBytes - 1);
  Keys keys;
  if (!keys.derive(password, ByteSpan(head).subspan(1, kSaltBytes), log)) return false;

  constexpr std::size_t kMostPadding = 16;
  const std::uint32_t before = out.getSize();
  if (!out.reserve(kHeadBytes + in.size() + kMostPadding + kMacBytes))
    return fail("Not enough memory.", log);
  out.append(ByteSpan(head));
  if (!encryptBytes(keys.cipher(ByteSpan(head).last(kIvBytes)), in, out, log)) {
    out.truncate(before);
    return false;
  }
  return out.append(ByteSpan(keys.mac(out.bytes().subspan(before))));
}

bool openWithPassword(ByteSpan in, ByteSpan password, DataBuffer& out, LogBase& log) {
  if (in.size() < kHeadBytes + kMacBytes || in[0] != kVersion) return fail(kWrong, log);
  Keys keys;
  if (!keys.derive(password, in.subspan(1, kSaltBytes), log)) return false;
  const ByteSpan sealed = in.first(in.size() - kMacBytes);
  if (!areEqual(keys.mac(sealed), in.last(kMacBytes))) return fail(kWrong, log);
  return decryptBytes(keys.cipher(sealed.subspan(1 + kSaltBytes, kIvBytes)),
                      sealed.subspan(kHeadBytes), out, log);
}

}  // namespace zantrel

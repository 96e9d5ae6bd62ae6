#include "crypto/pbkdf.h"

#include <algorithm>
#include <bit>

#include "core/byte_order.h"
#include "core/data_buffer.h"
#include "core/log_base.h"
#include "crypto/hash.h"
#include "crypto/hmac.h"

namespace zantrel {
namespace {

bool checkIterations(int iterations, LogBase& log) {
  if (iterations > 0) return true;
  log.logError("The iteration count must be at least 1.");
  log.logDataLong("iterationCount", iterations);
  return false;
}

const HashAlgorithm& dispatchedHash(int hashId) {
  const HashAlgorithm* const found = findHashAlgorithm(hashId);
  return found != nullptr && found->inDispatcher ? *found : *findHashAlgorithm(kHashSha1);
}

/// Two parts as one text, which is wiped.
class Joined {
 public:
  Joined(ByteSpan first, ByteSpan second) {
    whole_ = buffer_.reserve(first.size() + second.size()) && buffer_.append(first) &&
             buffer_.append(second);
  }
  Joined(const Joined&) = delete;
  Joined& operator=(const Joined&) = delete;
  ~Joined() { buffer_.secureClear(); }

  /// Whether there was memory for both.
  bool check(LogBase& log) const {
    if (!whole_) log.logError("Not enough memory.");
    return whole_;
  }
  ByteSpan bytes() const { return buffer_.bytes(); }
  std::uint8_t* end() const { return buffer_.getData2() + buffer_.getSize(); }

 private:
  DataBuffer buffer_;
  bool whole_ = false;
};

// Section 5.2, step 3: F(P, S, c, i), the exclusive-or of all codes of a chain.
void deriveBlock(const HmacKey& password, ByteSpan saltAndIndex, int iterations,
                 std::uint8_t* block) {
  const std::size_t size = password.macBytes();
  std::uint8_t code[kMaxDigestBytes];
  password.mac(saltAndIndex, code);
  std::copy_n(code, size, block);
  for (int i = 1; i < iterations; ++i) {
    password.mac({code, size}, code);
    for (std::size_t k = 0; k < size; ++k) block[k] ^= code[k];
  }
  wipeLocal(code);
}

}  // namespace

bool pbkdf1(int hashId, ByteSpan password, ByteSpan salt, int iterations,
            std::span<std::uint8_t> key, LogBase& log) {
  if (!checkIterations(iterations, log)) return false;
  const HashAlgorithm& hash = dispatchedHash(hashId);
  if (key.size() > hash.digestBytes) {
    log.logError("PBKDF1 cannot derive more bytes than the digest has.");
    log.logDataLong("digestBytes", static_cast<std::int32_t>(hash.digestBytes));
    return false;
  }
  const Joined input(password, salt);
  if (!input.check(log)) return false;
  std::uint8_t digest[kMaxDigestBytes];
  hash.digest(input.bytes(), digest);
  for (int i = 1; i < iterations; ++i) hash.digest({digest, hash.digestBytes}, digest);
  std::copy_n(digest, key.size(), key.begin());
  wipeLocal(digest);
  return true;
}

bool pbkdf2(int hashId, ByteSpan password, ByteSpan salt, int iterations,
            std::span<std::uint8_t> key, LogBase& log) {
  if (!checkIterations(iterations, log)) return false;
  constexpr std::uint8_t kNoIndex[4] = {};
  const Joined input(salt, kNoIndex);
  if (!input.check(log)) return false;
  const HmacKey keyed = HmacKey::standard(password, hashId);
  std::uint8_t block[kMaxDigestBytes];
  for (std::uint32_t index = 1; !key.empty(); ++index) {
    storeWord<std::endian::big>(index, input.end() - sizeof kNoIndex);
    deriveBlock(keyed, input.bytes(), iterations, block);
    const std::size_t taken = std::min(key.size(), keyed.macBytes());
    std::copy_n(block, taken, key.begin());
    key = key.subspan(taken);
  }
  wipeLocal(block);
  return true;
}

}  // namespace zantrel

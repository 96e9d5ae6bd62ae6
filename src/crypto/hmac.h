#pragma once
// HMAC (RFC 2104) over the algorithms that Hash::doHash computes.
//
// Two rules differ from the standard, deliberately, since stored data depend on them: the pads have
// 64 bytes for every algorithm but SHA-512, so that HMAC-SHA-384 is not that of RFC 4231; and a
// number that doHash does not know (HAVAL, MD4, RIPEMD) means SHA-1, of whose digest of a long key
// only the 16 bytes of Hash::hashLen() are taken.

#include <cstddef>
#include <cstdint>
#include <variant>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "crypto/md2.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"
#include "crypto/sha2.h"

namespace zantrel {

/// A key made ready: the states behind both pads are kept, so that each message costs neither the
/// pads nor the key's digest. May be copied and used by several threads at once; wipes itself.
class HmacKey final {
 public:
  HmacKey(ByteSpan key, int hashId);
  /// With pads of RFC 2104's size for every algorithm, SHA-384 included.
  static HmacKey standard(ByteSpan key, int hashId);

  /// Length of the result in bytes.
  std::size_t macBytes() const noexcept;
  /// Writes macBytes() bytes, 64 at most.
  void mac(ByteSpan data, std::uint8_t* out) const;

 private:
  template <class State>
  struct Pads {
    BlockHash<State> inner;
    BlockHash<State> outer;
  };

  HmacKey(ByteSpan key, int hashId, std::size_t padBytes);

  template <class State>
  void start(ByteSpan key, std::size_t padBytes);

  std::variant<Pads<Sha1State>, Pads<Sha256State>, Pads<Sha384State>, Pads<Sha512State>,
               Pads<Md2State>, Pads<Md5State>>
      pads_;
};

class Hmac final {
 public:
  Hmac() = delete;

  /// Puts the authentication code of the data into `out`.
  static void hmac(const void* data, std::size_t dataLength, const void* key, std::size_t keyLength,
                   int hashId, DataBuffer& out);
};

}  // namespace zantrel

#pragma once
// A digest under way whose algorithm is chosen at run time by its number.

#include <cstddef>
#include <cstdint>
#include <variant>

#include "crypto/haval2.h"
#include "crypto/md2.h"
#include "crypto/md4.h"
#include "crypto/md5.h"
#include "crypto/ripemd.h"
#include "crypto/sha1.h"
#include "crypto/sha2.h"

namespace zantrel {

class DigestContext final {
 public:
  /// Algorithms that share a context kind: SHA-256, SHA-384 and SHA-512 are one family.
  static constexpr std::size_t kFamilies = 10;
  /// The family of a hash number, below kFamilies; numbers not known have SHA-1's.
  static std::size_t familyOf(int hashId) noexcept;

  /// For the algorithm of this number, SHA-1 when it is not known. The size and the passes are
  /// HAVAL's and may have any value (haval2.h).
  explicit DigestContext(int hashId, int havalBits = Haval2::kDefaultBits,
                         int havalPasses = Haval2::kDefaultPasses);

  std::size_t digestBytes() const noexcept {
    return std::visit([](const auto& digest) { return digest.digestBytes(); }, digest_);
  }
  void update(ByteSpan bytes) {
    std::visit([bytes](auto& digest) { digest.update(bytes); }, digest_);
  }
  /// Appends the digest.
  void finalize(DataBuffer& out) {
    std::visit([&out](auto& digest) { digest.finalize(out); }, digest_);
  }
  void digestData(ByteSpan bytes, DataBuffer& out) {
    std::visit([&](auto& digest) { digest.digestData(bytes.data(), bytes.size(), out); }, digest_);
  }
  /// As Digest::digestSource(): the log names the algorithm after an abort.
  bool digestSource(DataSource& source, ProgressMonitor* progress, LogBase& log, DataBuffer& out) {
    return std::visit([&](auto& digest) { return digest.digestSource(source, progress, log, out); },
                      digest_);
  }

 private:
  using Any =
      std::variant<Sha1, Sha2, Md2, Md4, Md5, Ripemd128, Ripemd160, Ripemd256, Ripemd320, Haval2>;
  static_assert(std::variant_size_v<Any> == kFamilies);

  static Any make(int hashId, int havalBits, int havalPasses);

  Any digest_;
};

}  // namespace zantrel

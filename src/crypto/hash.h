#pragma once
// The digest algorithms by number: one table row each, and the dispatcher of the code that knows an
// algorithm by its number only (signatures, key derivation, protocols).

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/ext_int_array.h"
#include "core/string_buffer.h"

namespace zantrel {

/// Numbers of the digest algorithms; the values are fixed.
enum HashId : int {
  kHashSha1 = 1,
  kHashSha384 = 2,
  kHashSha512 = 3,
  kHashMd2 = 4,
  kHashMd5 = 5,
  kHashHaval = 6,
  kHashSha256 = 7,
  kHashMd4 = 8,
  kHashRipemd128 = 9,
  kHashRipemd160 = 10,
  kHashRipemd256 = 11,
  kHashRipemd320 = 12
};

/// What is known about one algorithm.
struct HashAlgorithm {
  int id;
  std::string_view name;    ///< as `HashAlgorithm` names it: "sha256"
  const char* printedName;  ///< as logs name it: "SHA-256"
  std::size_t digestBytes;  ///< HAVAL's is its largest
  std::size_t blockBytes;
  std::span<const std::uint32_t> oid;  ///< object identifier; empty where Hash knows none
  bool inDispatcher;                   ///< Hash::doHash computes it
  void (*digest)(ByteSpan bytes, std::uint8_t* out);  ///< HAVAL's with its default settings
};

/// The longest digest of all, in bytes.
inline constexpr std::size_t kMaxDigestBytes = 64;

/// All rows, in the order in which names are compared.
std::span<const HashAlgorithm> hashAlgorithms() noexcept;
/// The row of a number, or null.
const HashAlgorithm* findHashAlgorithm(int hashId) noexcept;
/// The row of a name as in HashAlgorithm::name, or null.
const HashAlgorithm* findHashAlgorithm(std::string_view name) noexcept;

/// Knows SHA-1, MD2, MD5 and SHA-2 only; HAVAL, MD4 and RIPEMD have numbers, but whoever wants them
/// must not come here (deliberate: they become SHA-1).
class Hash final {
 public:
  Hash() = delete;

  /// Puts the digest of the bytes into `out`; SHA-1 where the number is not known.
  static void doHash(const void* bytes, std::size_t length, int hashId, DataBuffer& out);
  /// The digest's length in bytes; 16 where the number is not known, though doHash gives 20.
  static std::size_t hashLen(int hashId) noexcept;
  /// The number for a name such as "SHA-256" or "sha256Digest"; SHA-1 for any other name.
  static int hashIdFromName(std::string_view name);
  /// The printed name, or "Unknown".
  static void hashNameFromId(int hashId, StringBuffer& out);
  /// The arcs of the algorithm's object identifier; false where the number is not known.
  static bool digestOid(int hashId, ExtIntArray& out);
};

}  // namespace zantrel

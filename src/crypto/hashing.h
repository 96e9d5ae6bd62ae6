#pragma once
// One-shot SHA-1 and MD2, for code that always wants these.

#include <cstddef>
#include <cstdint>

#include "core/data_buffer.h"
#include "core/data_source.h"

namespace zantrel {

class LogBase;
class ProgressMonitor;

class Hashing final {
 public:
  /// Numbers by which hashSourceWithProvider knows its algorithms (those of Windows' CryptoAPI).
  static constexpr std::uint32_t kCalgMd2 = 0x8001;
  static constexpr std::uint32_t kCalgSha1 = 0x8004;

  Hashing() = delete;

  /// Each puts the digest into `out`.
  static void sha1(const void* bytes, std::size_t length, DataBuffer& out);
  static void sha1(const DataBuffer& bytes, DataBuffer& out);
  static void md2(const void* bytes, std::size_t length, DataBuffer& out);
  static void md2(const DataBuffer& bytes, DataBuffer& out);

  /// Hashes all that a source yields and appends the digest. The provider is this library itself.
  /// False, with the reason in the log, when the algorithm is neither of the two, reading failed,
  /// or the monitor (null for none) asked to stop: "Hashing aborted by application".
  static bool hashSourceWithProvider(std::uint32_t algorithmId, DataSource& source,
                                     ProgressMonitor* progress, LogBase& log, DataBuffer& out);
};

}  // namespace zantrel

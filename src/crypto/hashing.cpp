#include "crypto/hashing.h"

#include "core/log_base.h"
#include "crypto/hash.h"
#include "crypto/md2.h"
#include "crypto/sha1.h"

namespace zantrel {

void Hashing::sha1(const void* bytes, std::size_t length, DataBuffer& out) {
  Hash::doHash(bytes, length, kHashSha1, out);
}

void Hashing::sha1(const DataBuffer& bytes, DataBuffer& out) {
  sha1(bytes.getData2(), bytes.getSize(), out);
}

void Hashing::md2(const void* bytes, std::size_t length, DataBuffer& out) {
  Hash::doHash(bytes, length, kHashMd2, out);
}

void Hashing::md2(const DataBuffer& bytes, DataBuffer& out) {
  md2(bytes.getData2(), bytes.getSize(), out);
}

bool Hashing::hashSourceWithProvider(std::uint32_t algorithmId, DataSource& source,
                                     ProgressMonitor* progress, LogBase& log, DataBuffer& out) {
  constexpr const char* kAbortText = "Hashing aborted by application";
  if (algorithmId == kCalgSha1) return Sha1().digestSource(source, progress, log, kAbortText, out);
  if (algorithmId == kCalgMd2) return Md2().digestSource(source, progress, log, kAbortText, out);
  log.logError("Failed to create hash object.");
  log.logHex("algorithmId", algorithmId);
  return false;
}

}  // namespace zantrel

#pragma once
// Process-wide counts of the objects of some classes that are alive, for the log of an internal
// exception: they show what was going on and what leaks.

#include <array>
#include <atomic>
#include <cstdint>

namespace zantrel {

enum class LiveObject : std::uint8_t {
  ClsZip,
  ClsZipEntry,
  ClsMailMan,
  ClsImap,
  Imap,
  ClsDkim,
  Dkim,
  ClsCrypt,
  ClsMime,
  Pop3,
  Crypt,
  Email,
  MimeMessage2,
  PpmdModel,
  TreeNode,
  Http,
  Ftp,
  Socket,
  Stack,
  Inflate,
  Output,
  Cert,
  UL1,
};

inline constexpr std::size_t kLiveObjectKinds = 23;

/// The tag of a count in the log, such as "ClsZipGcp".
const char* liveObjectTag(LiveObject kind);
std::atomic<std::int32_t>& liveObjectCount(LiveObject kind);
/// Sets all counts to 0 together. For the process's start and end only: no component does it.
void resetLiveObjectCounts();

/// A member of a class whose living objects are counted.
template <LiveObject kind>
class CountedObject {
 public:
  CountedObject() { count(1); }
  CountedObject(const CountedObject&) { count(1); }
  CountedObject& operator=(const CountedObject&) = default;
  ~CountedObject() { count(-1); }

 private:
  static void count(std::int32_t step) {
    liveObjectCount(kind).fetch_add(step, std::memory_order_relaxed);
  }
};

}  // namespace zantrel

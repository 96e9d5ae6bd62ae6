#include "platform/random.h"

#include <algorithm>

#include <windows.h>
// After windows.h, whose types it uses.
#include <bcrypt.h>

#include "platform/fail_fast.h"

namespace zantrel {

void randomBytes(void* buffer, std::size_t size) {
  auto* out = static_cast<UCHAR*>(buffer);
  while (size > 0) {
    const auto part = static_cast<ULONG>(std::min<std::size_t>(size, 1U << 30));
    if (BCryptGenRandom(nullptr, out, part, BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0) failFast();
    out += part;
    size -= part;
  }
}

}  // namespace zantrel

#include "platform/secure_wipe.h"

#include <cstring>

namespace zantrel {

void secureWipe(void* data, std::size_t size) noexcept {
  if (data == nullptr || size == 0) return;
  std::memset(data, 0, size);
  // The compiler must assume that the assembly reads the memory, so the stores above stay.
  __asm__ __volatile__("" : : "r"(data) : "memory");
}

}  // namespace zantrel

#pragma once

#include <cstddef>

namespace zantrel {

/// Fills the buffer with random bytes of the operating system; stops the process when it has none.
void randomBytes(void* buffer, std::size_t size);

}  // namespace zantrel

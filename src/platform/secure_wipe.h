#pragma once
// Overwrites memory that held a secret in a way that the optimiser cannot remove.

#include <cstddef>

namespace zantrel {

void secureWipe(void* data, std::size_t size) noexcept;

}  // namespace zantrel

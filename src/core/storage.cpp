#include "core/storage.h"

#include <cstdlib>

namespace zantrel::storage {
namespace {

constexpr long long kNoFault = -1;
thread_local long long successesLeft = kNoFault;

bool mayAllocate() noexcept {
  if (successesLeft == kNoFault) return true;
  if (successesLeft == 0) return false;
  --successesLeft;
  return true;
}

}  // namespace

void* allocate(std::size_t size) noexcept {
  return mayAllocate() ? std::malloc(size) : nullptr;
}

void* reallocate(void* block, std::size_t size) noexcept {
  return mayAllocate() ? std::realloc(block, size) : nullptr;
}

void release(void* block) noexcept {
  std::free(block);
}

ScopedAllocationFault::ScopedAllocationFault(std::size_t successes) noexcept
    : previous_(successesLeft) {
  successesLeft = static_cast<long long>(successes);
}

ScopedAllocationFault::~ScopedAllocationFault() {
  successesLeft = previous_;
}

}  // namespace zantrel::storage

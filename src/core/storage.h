#pragma once
// The blocks behind the library's own buffers and lists. One place allocates them, so that tests
// can make any single allocation fail.

#include <cstddef>

namespace zantrel::storage {

/// A new block, or null when it cannot be had.
void* allocate(std::size_t size) noexcept;
/// The block with a new size, its content kept up to the smaller of both sizes; null, with the old
/// block untouched, when that cannot be had. A null block is allocated.
void* reallocate(void* block, std::size_t size) noexcept;
void release(void* block) noexcept;

/// While one stands, every allocation of this thread beyond the next `successes` fails. For tests.
class ScopedAllocationFault {
 public:
  explicit ScopedAllocationFault(std::size_t successes) noexcept;
  ~ScopedAllocationFault();
  ScopedAllocationFault(const ScopedAllocationFault&) = delete;
  ScopedAllocationFault& operator=(const ScopedAllocationFault&) = delete;

 private:
  long long previous_;
};

}  // namespace zantrel::storage

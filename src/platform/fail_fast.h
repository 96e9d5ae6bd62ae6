#pragma once
// Stops the process at once: the answer to a guard that no longer holds, where going on could
// corrupt data. A trap instruction, because optimisers drop a plain write through a null pointer.

namespace zantrel {

[[noreturn]] inline void failFast() noexcept {
  __builtin_trap();
}

}  // namespace zantrel

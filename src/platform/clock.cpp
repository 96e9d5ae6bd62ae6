#include "platform/clock.h"

#include <atomic>

namespace zantrel {

namespace {

std::atomic<const Clock*> replacement{nullptr};

}  // namespace

const Clock& systemClock() noexcept {
  const Clock* clock = replacement.load(std::memory_order_acquire);
  return clock != nullptr ? *clock : machineClock();
}

ScopedClock::ScopedClock(const Clock& clock) noexcept
    : previous_(replacement.exchange(&clock, std::memory_order_acq_rel)) {}

ScopedClock::~ScopedClock() {
  replacement.store(previous_, std::memory_order_release);
}

}  // namespace zantrel

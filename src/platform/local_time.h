#pragma once
// Moments as seconds since 1970-01-01 UTC, and as the local time that the machine's zone has for
// them, by the rule that held or will hold on that date.

#include <cstdint>

#include "platform/clock.h"

namespace zantrel {

/// An hour that the clocks skip or repeat is read as one of its two meanings.
std::int64_t secondsFromLocal(const SystemTime& local);
SystemTime localFromSeconds(std::int64_t seconds);

}  // namespace zantrel

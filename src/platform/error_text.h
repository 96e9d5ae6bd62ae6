#pragma once

#include <cstdint>
#include <string>

namespace zantrel {

/// The system's own message for one of its error numbers, as UTF-8, trimmed; never empty.
std::string systemErrorText(std::uint32_t errorNumber);

}  // namespace zantrel

#pragma once

#include <string>

namespace zantrel {

/// Name of the operating-system user that runs the process, UTF-8; empty if it cannot be told.
std::string userName();

}  // namespace zantrel

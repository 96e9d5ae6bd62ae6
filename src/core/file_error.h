#pragma once

#include "platform/file.h"

namespace zantrel {

class LogBase;

/// Logs why a file operation failed: the error, "filePath" and, unless 0, the system's own reason.
/// Always false, so that a failing function can return it.
bool logFileError(LogBase& log, const char* what, const char* path, OsError error);

}  // namespace zantrel

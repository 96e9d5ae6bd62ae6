#include "core/file_error.h"

#include "core/log_base.h"

namespace zantrel {

bool logFileError(LogBase& log, const char* what, const char* path, OsError error) {
  log.logError(what);
  log.logData("filePath", path);
  if (error != 0) log.logWindowsError(error);
  return false;
}

}  // namespace zantrel

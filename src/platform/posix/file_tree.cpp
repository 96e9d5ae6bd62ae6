#include "platform/file_tree.h"

#include <cerrno>

#include <sys/stat.h>

namespace zantrel {

namespace {

// The mask can be read only by setting it. What another thread makes in between gets too few rights
// rather than too many.
mode_t withheldRights() {
  const mode_t mask = ::umask(077);
  ::umask(mask);
  return mask;
}

}  // namespace

OsError setFileMode(const std::string& utf8Path, unsigned mode) {
  if (utf8Path.find('\0') != std::string::npos) return EINVAL;
  const auto rights = static_cast<mode_t>(mode & 0777) & static_cast<mode_t>(~withheldRights());
  return ::chmod(utf8Path.c_str(), rights) == 0 ? 0 : static_cast<OsError>(errno);
}

bool isPlainFileName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

}  // namespace zantrel

#include "platform/system_info.h"

#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace zantrel {

std::string userName() {
  std::vector<char> buffer(4096);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
    return found->pw_name;
  // A container may run under a number that no password file names.
  const char* name = std::getenv("USER");
  return name != nullptr ? name : "";
}

}  // namespace zantrel

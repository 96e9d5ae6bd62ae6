#include <unistd.h>

#include "console.h"

namespace zantrel_cli {

std::vector<std::string> openConsole(int argc, char** argv) {
  return {argv, argv + argc};
}

bool errorIsTerminal() {
  return isatty(STDERR_FILENO) != 0;
}
bool outputIsTerminal() {
  return isatty(STDOUT_FILENO) != 0;
}

}  // namespace zantrel_cli

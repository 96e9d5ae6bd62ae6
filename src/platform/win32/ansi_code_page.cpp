#include "platform/ansi_code_page.h"

#include <windows.h>

namespace zantrel {

int defaultAnsiCodePage() noexcept {
  return static_cast<int>(GetACP());
}

}  // namespace zantrel

#include "platform/system_info.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <lmcons.h>

#include "platform/win32/utf16.h"

namespace zantrel {

std::string userName() {
  wchar_t name[UNLEN + 1];
  DWORD size = UNLEN + 1;
  if (!GetUserNameW(name, &size) || size == 0) return {};
  return utf8FromWide({name, size - 1});  // the size counts the terminator
}

}  // namespace zantrel

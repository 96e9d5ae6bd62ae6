#include "platform/error_text.h"

#include <windows.h>

#include "platform/win32/utf16.h"

namespace zantrel {

std::string systemErrorText(std::uint32_t errorNumber) {
  wchar_t text[1024];
  DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                              errorNumber, 0, text, 1024, nullptr);
  while (size > 0 && text[size - 1] <= L' ') --size;
  DWORD start = 0;
  while (start < size && text[start] <= L' ') ++start;
  std::string utf8 = utf8FromWide({text + start, size - start});
  return utf8.empty() ? "Unknown error " + std::to_string(errorNumber) : utf8;
}

}  // namespace zantrel

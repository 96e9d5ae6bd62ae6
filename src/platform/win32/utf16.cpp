#include "platform/win32/utf16.h"

#include <windows.h>

namespace zantrel {

bool wideFromUtf8(std::string_view utf8, std::wstring& out) {
  out.clear();
  if (utf8.empty()) return true;
  if (utf8.size() > 0x7FFFFFFF) return false;
  const int count = static_cast<int>(utf8.size());
  const int size =
      MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), count, nullptr, 0);
  if (size <= 0) return false;
  out.resize(static_cast<std::size_t>(size));
  return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), count, out.data(), size) ==
         size;
}

std::string utf8FromWide(std::wstring_view wide) {
  std::string out;
  if (wide.empty() || wide.size() > 0x7FFFFFFF) return out;
  const int count = static_cast<int>(wide.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), count, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return out;
  out.resize(static_cast<std::size_t>(size));
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), count, out.data(), size, nullptr, nullptr);
  return out;
}

}  // namespace zantrel

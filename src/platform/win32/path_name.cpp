#include "platform/win32/path_name.h"

#include "platform/win32/utf16.h"

namespace zantrel {

namespace {

// Exactly: every character has an ANSI form of its own, none is replaced by a similar one.
bool exactAnsi(const std::wstring& wide, std::string& out) {
  if (!AreFileApisANSI()) return false;
  const bool utf8 = GetACP() == CP_UTF8;  // that code page takes neither flag nor default
  const DWORD flags = utf8 ? 0 : WC_NO_BEST_FIT_CHARS;
  BOOL replaced = FALSE;
  BOOL* const replacedOut = utf8 ? nullptr : &replaced;
  const int count = static_cast<int>(wide.size());
  const int size =
      WideCharToMultiByte(CP_ACP, flags, wide.data(), count, nullptr, 0, nullptr, replacedOut);
  if (size <= 0 || replaced) return false;
  out.resize(static_cast<std::size_t>(size));
  return WideCharToMultiByte(CP_ACP, flags, wide.data(), count, out.data(), size, nullptr,
                             nullptr) == size;
}

// The prefix that lifts the length limit wants an absolute path with backslashes.
std::wstring longForm(const std::wstring& path) {
  if (path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\")) return path;
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (size == 0) return path;
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

}  // namespace

DWORD PathName::set(const std::string& utf8Path) {
  constexpr std::size_t kLongestPlainPath =
      240;  // below MAX_PATH, with room for a folder's 8.3 name
  constexpr std::size_t kLongestPath = 32767;
  if (utf8Path.find('\0') != std::string::npos) return ERROR_INVALID_NAME;
  if (!wideFromUtf8(utf8Path, wide_) || wide_.size() > kLongestPath) return ERROR_INVALID_NAME;
  useAnsi_ = wide_.size() <= kLongestPlainPath && exactAnsi(wide_, ansi_);
  if (wide_.size() > kLongestPlainPath) wide_ = longForm(wide_);
  return ERROR_SUCCESS;
}

HANDLE PathName::create(DWORD access, DWORD share, DWORD disposition, DWORD attributes) const {
  return useAnsi_
             ? CreateFileA(ansi_.c_str(), access, share, nullptr, disposition, attributes, nullptr)
             : CreateFileW(wide_.c_str(), access, share, nullptr, disposition, attributes, nullptr);
}

DWORD PathName::attributes() const {
  return useAnsi_ ? GetFileAttributesA(ansi_.c_str()) : GetFileAttributesW(wide_.c_str());
}

bool PathName::setAttributes(DWORD attributes) const {
  return (useAnsi_ ? SetFileAttributesA(ansi_.c_str(), attributes)
                   : SetFileAttributesW(wide_.c_str(), attributes)) != 0;
}

bool PathName::remove() const {
  return (useAnsi_ ? DeleteFileA(ansi_.c_str()) : DeleteFileW(wide_.c_str())) != 0;
}

}  // namespace zantrel

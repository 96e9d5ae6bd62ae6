#include "platform/file_tree.h"

#include <algorithm>
#include <iterator>

#include <windows.h>

#include "platform/win32/path_name.h"

namespace zantrel {

namespace {

constexpr std::string_view kDevices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};

/// A device is meant by its name with any suffix, in any case: "NUL", "com1.txt".
bool isDevice(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  while (stem.ends_with(' ')) stem.pop_back();
  std::transform(stem.begin(), stem.end(), stem.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  if (std::find(std::begin(kDevices), std::end(kDevices), stem) != std::end(kDevices)) return true;
  // A digit behind it may also be one of the superscripts of Latin-1.
  const bool port = stem.starts_with("com") || stem.starts_with("lpt");
  return port && (stem.size() == 4 || (stem.size() == 5 && stem[3] == '\xC2'));
}

}  // namespace

OsError setFileMode(const std::string& utf8Path, unsigned mode) {
  PathName path;
  if (const DWORD error = path.set(utf8Path)) return error;
  DWORD attributes = path.attributes();
  if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError();
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ERROR_SUCCESS;
  attributes &= ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  if ((mode & 0200) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
  return path.setAttributes(attributes) ? ERROR_SUCCESS : GetLastError();
}

bool isPlainFileName(std::string_view name) {
  if (name.empty() || name.ends_with('.') || name.ends_with(' ') || isDevice(name)) return false;
  return std::none_of(name.begin(), name.end(), [](char c) {
    return (c >= 0 && c < ' ') || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
  });
}

}  // namespace zantrel

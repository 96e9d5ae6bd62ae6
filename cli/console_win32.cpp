#include <conio.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cstdlib>

#include "console.h"

namespace zantrel_cli {
namespace {

std::string toUtf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string out(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), size, nullptr, nullptr);
  out.pop_back();  // the terminator
  return out;
}

std::wstring toWide(const std::string& text) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
  if (size <= 1) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), size);
  wide.pop_back();  // the terminator
  return wide;
}

}  // namespace

std::vector<std::string> openConsole(int argc, char** argv) {
  (void)_setmode(_fileno(stdin), _O_BINARY);
  (void)_setmode(_fileno(stdout), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  // argv has been squeezed through the ANSI code page; the wide command line has not.
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) return {argv, argv + argc};
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(toUtf8(wide[i]));
  LocalFree(wide);
  return arguments;
}

bool errorIsTerminal() {
  return _isatty(_fileno(stderr)) != 0;
}
bool outputIsTerminal() {
  return _isatty(_fileno(stdout)) != 0;
}

std::optional<std::string> standardInputPath() {
  return std::nullopt;
}
std::optional<std::string> standardOutputPath() {
  return std::nullopt;
}

std::FILE* openFile(const std::string& path, const char* mode) {
  return _wfopen(toWide(path).c_str(), toWide(mode).c_str());
}

void removeFile(const std::string& path) {
  DeleteFileW(toWide(path).c_str());
}

std::string makeTemporaryFile() {
  wchar_t folder[MAX_PATH + 1];
  wchar_t path[MAX_PATH + 1];
  const DWORD size = GetTempPathW(MAX_PATH + 1, folder);
  if (size == 0 || size > MAX_PATH || GetTempFileNameW(folder, L"zan", 0, path) == 0) return {};
  return toUtf8(path);
}

std::optional<std::string> environmentVariable(const std::string& name) {
  const wchar_t* const value = _wgetenv(toWide(name).c_str());
  return value != nullptr ? std::optional<std::string>(toUtf8(value)) : std::nullopt;
}

bool promptSecret(const std::string& prompt, std::string& out) {
  constexpr wint_t kInterruptKey = 3, kBackspace = 8, kEndOfInput = 26;
  const HANDLE console = CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                     nullptr, OPEN_EXISTING, 0, nullptr);
  if (console == INVALID_HANDLE_VALUE) return false;
  CloseHandle(console);
  _cputs(prompt.c_str());
  std::wstring typed;
  wint_t key = 0;
  while ((key = _getwch()) != L'\r' && key != L'\n' && key != kEndOfInput && key != kInterruptKey &&
         key != WEOF) {
    if (key != kBackspace) {
      typed += static_cast<wchar_t>(key);
    } else if (!typed.empty()) {
      typed.pop_back();
    }
  }
  _cputs("\r\n");
  out = toUtf8(typed.c_str());
  return key != kInterruptKey && key != WEOF;
}

}  // namespace zantrel_cli

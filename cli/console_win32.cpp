#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include <cstdio>

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

}  // namespace zantrel_cli

#include "platform/ansi_code_page.h"

#include <cstdlib>

namespace zantrel {

namespace {

int fromEnvironment() {
  constexpr int kWindows1252 = 1252;
  const char* text = std::getenv("ZANTREL_ANSI_CODE_PAGE");
  if (text == nullptr) return kWindows1252;
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  const bool whole = end != text && *end == '\0';
  return whole && number > 0 && number <= 65535 ? static_cast<int>(number) : kWindows1252;
}

}  // namespace

int defaultAnsiCodePage() noexcept {
  static const int codePage = fromEnvironment();
  return codePage;
}

}  // namespace zantrel

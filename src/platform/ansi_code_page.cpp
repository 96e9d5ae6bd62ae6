#include "platform/ansi_code_page.h"

#include <atomic>

namespace zantrel {

namespace {

std::atomic<int> chosen{0};

}  // namespace

int ansiCodePage() noexcept {
  const int codePage = chosen.load(std::memory_order_relaxed);
  return codePage != 0 ? codePage : defaultAnsiCodePage();
}

void setAnsiCodePage(int codePage) noexcept {
  chosen.store(codePage, std::memory_order_relaxed);
}

}  // namespace zantrel

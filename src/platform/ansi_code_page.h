#pragma once
// The process-wide ANSI code page. GetACP() on Windows; elsewhere 1252 unless the environment
// variable ZANTREL_ANSI_CODE_PAGE names another, so that results do not depend on a locale.

namespace zantrel {

int ansiCodePage() noexcept;
/// Sets the ANSI code page of this process; 0 goes back to the default. For start-up and tests.
void setAnsiCodePage(int codePage) noexcept;
/// The machine's own: what holds while none was set.
int defaultAnsiCodePage() noexcept;

}  // namespace zantrel

#include "platform/error_text.h"

#include <locale.h>
#include <string.h>

namespace zantrel {

// The "C" locale keeps the text in ASCII whatever locale the application has chosen.
std::string systemErrorText(std::uint32_t errorNumber) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  const char* text = plain != nullptr ? strerror_l(static_cast<int>(errorNumber), plain) : nullptr;
  if (text == nullptr || *text == '\0') return "Unknown error " + std::to_string(errorNumber);
  return text;
}

}  // namespace zantrel

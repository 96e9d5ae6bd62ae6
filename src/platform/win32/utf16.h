#pragma once
// UTF-8 and UTF-16 at the border to the system's own functions.

#include <string>
#include <string_view>

namespace zantrel {

/// False when the bytes are not valid UTF-8.
bool wideFromUtf8(std::string_view utf8, std::wstring& out);
std::string utf8FromWide(std::wstring_view wide);

}  // namespace zantrel

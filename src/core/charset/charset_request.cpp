#include "core/charset/charset_request.h"

#include "core/charset/charset_naming.h"

namespace zantrel {

namespace {

std::string_view trimmed(std::string_view text) {
  static constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

bool beginsWithBomPrefix(std::string_view name) {
  static constexpr std::string_view kPrefix = "bom:";
  if (name.size() < kPrefix.size()) return false;
  for (std::size_t i = 0; i < kPrefix.size(); ++i) {
    const char c = name[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c) != kPrefix[i]) return false;
  }
  return true;
}

}  // namespace

CharsetRequest CharsetRequest::parse(std::string_view text) {
  CharsetRequest request;
  request.name = trimmed(text);
  request.byteOrderMark = beginsWithBomPrefix(request.name);
  if (request.byteOrderMark) request.name = trimmed(request.name.substr(4));
  request.codePage = CharsetNaming::charsetToCodePage(request.name);
  return request;
}

}  // namespace zantrel

#include "core/charset/charset_request.h"

#include "core/ascii_text.h"
#include "core/charset/charset_naming.h"
#include "core/text_search.h"

namespace zantrel {

CharsetRequest CharsetRequest::parse(std::string_view text) {
  static constexpr std::string_view kPrefix = "bom:";
  CharsetRequest request;
  request.name = trimmed(text);
  request.byteOrderMark = equalsAsciiNoCase(request.name.substr(0, kPrefix.size()), kPrefix);
  if (request.byteOrderMark) request.name = trimmed(request.name.substr(kPrefix.size()));
  request.codePage = CharsetNaming::charsetToCodePage(request.name);
  return request;
}

}  // namespace zantrel

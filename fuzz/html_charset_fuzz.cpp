// The search for charset declarations: its places lie inside the document and name what it says
// they name, and a rewritten document declares the new charset and nothing else.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/charset/html_charset.h"
#include "core/data_buffer.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static constexpr int kCodePages[] = {0, 1200, 1201, 65001, 65005, 932, 50220, 37};
  if (size == 0) return 0;
  const int codePage = kCodePages[data[0] % std::size(kCodePages)];
  const ByteSpan html(data + 1, size - 1);

  const HtmlCharset found(html, codePage);
  std::size_t last = found.mark().length;
  for (const HtmlCharsetDeclaration& d : found.declarations()) {
    check(d.offset >= last && d.length > 0 && d.offset + d.length <= html.size());
    last = d.offset + d.length;
  }
  check(found.mark().codePage == 0 || found.codePage() == found.mark().codePage);

  DataBuffer rewritten;
  const std::size_t done = found.rewrite(html, "koi8-r", rewritten);
  check(done <= html.size());
  check(rewritten.append(html.subspan(done)));
  // Escapes hide text and marks choose the reading; without them the second look sees the same.
  const bool plain = found.mark().codePage == 0 &&
                     asText(html).find('\x1B') == std::string_view::npos &&
                     html.size() + 1024 < kHtmlHeadBytes;
  if (!plain || found.declarations().empty()) return 0;
  const HtmlCharset again(rewritten.bytes(), codePage);
  check(again.declarations().size() == found.declarations().size());
  for (const HtmlCharsetDeclaration& d : again.declarations()) check(d.name == "koi8-r");
  return 0;
}

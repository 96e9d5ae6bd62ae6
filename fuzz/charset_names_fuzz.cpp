// Any text as the name of a charset. Checked: case, blanks around it and "_" for "-" do not matter,
// and the canonical name of the page found leads to a page again.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/charset/charset_naming.h"
#include "core/string_buffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zantrel;
  const std::string name(reinterpret_cast<const char*>(data), size);
  const int page = CharsetNaming::charsetToCodePage(name);
  std::string other = " \t" + name + "\r\n ";
  for (char& c : other) {
    if (c == '-') {
      c = '_';
    } else if (c >= 'a' && c <= 'z') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  if (CharsetNaming::charsetToCodePage(other) != page) std::abort();
  StringBuffer canonical;
  if (page != 0 && CharsetNaming::codePageToCharset(page, canonical) &&
      CharsetNaming::charsetToCodePage(canonical.view()) == 0)
    std::abort();
  return 0;
}

// Character references: any text decodes, encoded text is ASCII and decodes to what it was.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/charset/utf8_utf16.h"
#include "core/encode/html_entities.h"
#include "core/string_buffer.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

std::string applied(bool (*function)(std::string_view, StringBuffer&), std::string_view in) {
  StringBuffer out;
  require(function(in, out));
  return std::string(out.view());
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string decoded = applied(htmlEntityDecode, text);
  require(decoded.size() <= text.size() + text.size() / 5);
  if (isValidUtf8(asBytes(text))) require(isValidUtf8(asBytes(decoded)));
  if (text.find('&') == text.npos) require(decoded == text);

  require(applied(xmlSpecialDecode, applied(xmlSpecialEncode, text)) == text);
  for (const auto encode : {entityEncodeHex, entityEncodeDec}) {
    const std::string encoded = applied(encode, text);
    require(isAscii(encoded));
    const bool plain = text.find('&') == text.npos && isValidUtf8(asBytes(text));
    // U+0080..U+009F are written as numbers that HTML takes for windows-1252.
    const bool controls = text.find('\xC2') != text.npos;
    if (plain && !controls) require(applied(htmlEntityDecode, encoded) == text);
  }
  return 0;
}

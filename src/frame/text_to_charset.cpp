#include "frame/text_to_charset.h"

#include <string>

#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "core/log_base.h"
#include "core/xstring.h"

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

bool textToCharset(const XString& text, const CharsetRequest& charset, CharsetOrigin origin,
                   DataBuffer& out, LogBase& log) {
  if (charset.codePage == codepage::kUnknown) {
    log.logError("Unknown charset.");
    log.logData("Charset", std::string(charset.name).c_str());
    return false;
  }
  if (charset.byteOrderMark && !out.append(byteOrderMarkOf(charset.codePage))) return false;
  const int codePage =
      charset.codePage == codepage::kLatin1 ? codepage::kWindows1252 : charset.codePage;
  const std::uint32_t before = out.getSize();
  EncodingConvert converter;
  if (converter.EncConvert(codepage::kUtf8, codePage, text.getUtf8(), text.getSizeUtf8(), out))
    return true;
  log.logError("Character encoding conversion failed.");
  log.logData64("NumCharsIn", text.getNumChars());
  log.logDataLong("Charset", charset.codePage);
  log.logData64("ConvertedToNumBytes", out.getSize() - before);
  if (origin == CharsetOrigin::CharsetProperty)
    log.logInfo("Set the Charset property equal to an appropriate charset");
  return false;
}

}  // namespace zantrel

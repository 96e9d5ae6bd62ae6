// Whole text files in any charset.

#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_request.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/log_base.h"
#include "core/xstring.h"

namespace zantrel {
namespace {

constexpr const char* kConversionError = "Character encoding conversion failed.";

bool unknownCharset(const char* name, LogBase& log) {
  log.logError("Unknown charset.");
  log.logData("charset", name != nullptr ? name : "");
  return false;
}

}  // namespace

bool XString::readFile(const char* path, const char* charsetName, LogBase& log) {
  const int named = textCodePage(charsetName);
  clear();
  if (named == codepage::kUnknown) return unknownCharset(charsetName, log);
  DataBuffer content;
  if (!content.loadFileUtf8(path, log)) return false;

  // In charsets other than those of Unicode the bytes of a mark are text.
  const bool isUnicode = !byteOrderMarkOf(named).empty();
  const ByteOrderMark mark =
      isUnicode ? findByteOrderMark(content.bytes(), named) : ByteOrderMark{};
  const int codePage = mark.codePage != 0 ? mark.codePage : named;
  const std::string_view text = content.text().substr(mark.length);
  EncodingConvert converter;
  DataBuffer converted;
  bool stored = false;
  // A text in UTF-8 is converted all the same, to find what is invalid in it.
  const int to = codePage == codepage::kUtf8 ? codepage::kUtf16Le : codepage::kUtf8;
  const bool valid = converter.EncConvert(codePage, to, text.data(), text.size(), converted);
  if (to == codepage::kUtf8) {
    stored = setFromUtf8(converted.text());
  } else if (valid) {
    stored = setFromUtf8(text);
  } else {
    stored = setFromUnicode2({reinterpret_cast<const char16_t*>(converted.getData2()),
                              converted.getSize() / sizeof(char16_t)});
  }
  if (valid && stored) return true;
  log.logError(kConversionError);
  log.logData("filePath", path);
  log.logData("reason", converter.errorText().getString());
  return false;
}

bool XString::saveAs(const char* path, const char* charsetName, bool markUnicode,
                     LogBase& log) const {
  const CharsetRequest request = CharsetRequest::parse(charsetName != nullptr ? charsetName : "");
  const int codePage = request.name.empty() ? codepage::kUtf8 : request.codePage;
  // Most readers of UTF-8 expect no mark.
  if (codePage == codepage::kUtf8) markUnicode = false;
  if (request.byteOrderMark) markUnicode = true;
  if (codePage == codepage::kUnknown) return unknownCharset(charsetName, log);

  DataBuffer text;
  if (!getConverted(codePage, text)) {
    log.logError(kConversionError);
    log.logDataLong("NumCharsIn", static_cast<std::int32_t>(getNumChars()));
    log.logDataLong("Charset", codePage);
    log.logDataLong("ConvertedToNumBytes", static_cast<std::int32_t>(text.getSize()));
    return false;
  }
  const ByteSpan mark = markUnicode ? byteOrderMarkOf(codePage) : ByteSpan{};
  if (mark.empty()) return text.saveToFileUtf8(path, log);
  DataBuffer content;
  if (!content.reserve(mark.size() + text.getSize())) {
    log.logError("Out of memory while writing the file.");
    return false;
  }
  content.append(mark);
  content.append(text);
  return content.saveToFileUtf8(path, log);
}

bool XString::writeToFile(const char* path, const char* charsetName, LogBase& log) const {
  return saveAs(path, charsetName, false, log);
}

bool XString::saveToFile(const char* path, const char* charsetName, LogBase& log) const {
  return saveAs(path, charsetName, true, log);
}

}  // namespace zantrel

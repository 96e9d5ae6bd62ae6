// Whole text files in any charset.

#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/log_base.h"
#include "core/xstring.h"

namespace zantrel {
namespace {

constexpr const char* kConversionError = "Character encoding conversion failed.";
constexpr std::string_view kBomPrefix = "bom:";

struct ByteOrderMark {
  int codePage;
  std::string_view bytes;
};
// UTF-32 stands ahead of UTF-16, whose little-endian mark it begins with.
constexpr ByteOrderMark kMarks[] = {
    {codepage::kUtf8, "\xEF\xBB\xBF"},
    {codepage::kUtf32Le, std::string_view("\xFF\xFE\0\0", 4)},
    {codepage::kUtf32Be, std::string_view("\0\0\xFE\xFF", 4)},
    {codepage::kUtf16Le, "\xFF\xFE"},
    {codepage::kUtf16Be, "\xFE\xFF"},
};

const ByteOrderMark* markOf(int codePage) {
  for (const ByteOrderMark& mark : kMarks) {
    if (mark.codePage == codePage) return &mark;
  }
  return nullptr;
}

/// The mark that a file of some form of Unicode begins with, or null. What is said to be UTF-16 may
/// begin with a zero character, so for it a mark of UTF-32 does not count.
const ByteOrderMark* findMark(std::string_view content, int codePage) {
  const bool utf16 = codePage == codepage::kUtf16Le || codePage == codepage::kUtf16Be;
  for (const ByteOrderMark& mark : kMarks) {
    if (utf16 && mark.bytes.size() == 4) continue;
    if (content.substr(0, mark.bytes.size()) == mark.bytes) return &mark;
  }
  return nullptr;
}

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

  const ByteOrderMark* const mark =
      markOf(named) != nullptr ? findMark(content.text(), named) : nullptr;
  const int codePage = mark != nullptr ? mark->codePage : named;
  const std::string_view text = content.text().substr(mark != nullptr ? mark->bytes.size() : 0);
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
  StringBuffer name(charsetName);
  name.trim2();
  if (name.beginsWithIgnoreCase(kBomPrefix)) {
    name.setString(name.view().substr(kBomPrefix.size()));
    markUnicode = true;
  } else if (textCodePage(charsetName) == codepage::kUtf8) {
    markUnicode = false;  // most readers of UTF-8 expect none
  }
  const int codePage = textCodePage(name.getString());
  if (codePage == codepage::kUnknown) return unknownCharset(charsetName, log);

  DataBuffer text;
  if (!getConverted(codePage, text)) {
    log.logError(kConversionError);
    log.logDataLong("NumCharsIn", static_cast<std::int32_t>(getNumChars()));
    log.logDataLong("Charset", codePage);
    log.logDataLong("ConvertedToNumBytes", static_cast<std::int32_t>(text.getSize()));
    return false;
  }
  const ByteOrderMark* const mark = markUnicode ? markOf(codePage) : nullptr;
  if (mark == nullptr) return text.saveToFileUtf8(path, log);
  DataBuffer content;
  if (!content.reserve(mark->bytes.size() + text.getSize())) {
    log.logError("Out of memory while writing the file.");
    return false;
  }
  content.append(mark->bytes);
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

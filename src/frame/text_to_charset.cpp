#include "frame/text_to_charset.h"

#include <string>

#include "core/charset/byte_order_mark.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "core/log_base.h"
#include "core/xstring.h"

namespace zantrel {

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

#include "compress/xfdl.h"

#include "core/ascii_text.h"
#include "core/encode/content_coding.h"
#include "core/log_base.h"
#include "core/string_buffer.h"

namespace zantrel {

bool readXfdl(std::string_view form, bool& isXml, DataBuffer& gzip, LogBase& log) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (form.starts_with(kMark)) form.remove_prefix(kMark.size());
  form = trimmed(form);
  isXml = form.starts_with('<');
  if (isXml) return true;
  const std::size_t lineEnd = form.find_first_of("\r\n");
  const StringBuffer firstLine(form.substr(0, lineEnd));
  if (lineEnd == std::string_view::npos || !firstLine.containsSubstringNoCase("xfdl") ||
      !firstLine.containsSubstringNoCase("base64-gzip")) {
    log.logError("This is not an XFDL form in the encoding base64-gzip.");
    return false;
  }
  if (ContentCoding().decodeBase64(trimmed(form.substr(lineEnd)), gzip)) return true;
  log.logError("Out of memory.");
  return false;
}

}  // namespace zantrel

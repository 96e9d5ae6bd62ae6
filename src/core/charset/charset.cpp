#include "core/charset/charset.h"

#include "core/charset/charset_naming.h"

namespace zantrel {

bool Charset::setByName(std::string_view name) {
  const int page = CharsetNaming::charsetToCodePage(name);
  if (page == 0) return false;
  codePage_ = page;
  if (!CharsetNaming::codePageToCharset(page, name_)) name_.setString(name);
  return true;
}

bool Charset::setByCodePage(int codePage) {
  codePage_ = codePage;
  return CharsetNaming::codePageToCharset(codePage, name_);
}

}  // namespace zantrel

// The check of well-formedness: where Expat is installed, against its verdict, but where the two
// are known to differ; and what is well-formed has a tree.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#ifdef ZANTREL_HAVE_EXPAT
#include <expat.h>
#endif

#include "core/log_null.h"
#include "xml/parse_engine.h"
#include "xml/well_formed.h"
#include "xml/xml_store.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

#ifdef ZANTREL_HAVE_EXPAT
bool has(std::string_view text, std::string_view part) {
  return text.find(part) != text.npos;
}

// Expat reads UTF-16 whatever it is told, and takes every version.
bool isForBoth(std::string_view text) {
  if (text.size() >= 2 && (has(text.substr(0, 2), std::string_view("\0", 1)) ||
                           text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")))
    return false;
  const std::string_view start = text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text;
  const std::string_view declaration = start.substr(0, start.find("?>"));
  if (start.starts_with("<?xml") && !has(declaration, "'1.0'") && !has(declaration, "\"1.0\""))
    return false;
  // Parameter entities are read to different extents.
  return !has(text, "<!DOCTYPE") || !has(text, "%");
}

void compareWithExpat(std::string_view text, bool isWellFormed) {
  XML_Parser parser = XML_ParserCreate("UTF-8");
  const bool accepted =
      XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
  const XML_Error error = XML_GetErrorCode(parser);
  XML_ParserFree(parser);
  if (accepted == isWellFormed || error == XML_ERROR_AMPLIFICATION_LIMIT_BREACH) return;
  // It knows the names of the fourth edition only, which are fewer.
  check(isWellFormed && error == XML_ERROR_INVALID_TOKEN);
  bool isAscii = true;
  for (const char c : text) isAscii = isAscii && static_cast<std::uint8_t>(c) < 0x80;
  check(!isAscii);
}
#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  LogNull log;
  const bool isWellFormed = checkWellFormed(text, log);
#ifdef ZANTREL_HAVE_EXPAT
  if (isForBoth(text)) compareWithExpat(text, isWellFormed);
#endif
  const XmlStore::Ref store = XmlStore::create();
  const TreeInfo* const tree = ParseEngine(*store, {}, log, nullptr).parse(text);
  // The end of a DTD is found by counting "<" and ">", whatever they are part of.
  check(!isWellFormed || tree != nullptr || text.find("<!DOCTYPE") != text.npos);
  return 0;
}

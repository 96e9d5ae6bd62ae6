#include "xml/xml_escape.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "core/byte_block.h"
#include "xml/xml_output.h"

namespace zantrel {

namespace {

// Names that are left as they stand behind an "&" and before a ";": those of XML, and those of the
// characters 160 to 255 (HTML 4.01, section 24.2.1). In the order of their bytes.
constexpr std::string_view kNames[] = {
    "AElig",  "Aacute", "Acirc",  "Agrave", "Aring",  "Atilde", "Auml",   "Ccedil", "ETH",
    "Eacute", "Ecirc",  "Egrave", "Euml",   "Iacute", "Icirc",  "Igrave", "Iuml",   "Ntilde",
    "Oacute", "Ocirc",  "Ograve", "Oslash", "Otilde", "Ouml",   "THORN",  "Uacute", "Ucirc",
    "Ugrave", "Uuml",   "Yacute", "aacute", "acirc",  "acute",  "aelig",  "agrave", "amp",
    "apos",   "aring",  "atilde", "auml",   "brvbar", "ccedil", "cedil",  "cent",   "copy",
    "curren", "deg",    "divide", "eacute", "ecirc",  "egrave", "eth",    "euml",   "frac12",
    "frac14", "frac34", "gt",     "iacute", "icirc",  "iexcl",  "igrave", "iquest", "iuml",
    "laquo",  "lt",     "macr",   "micro",  "middot", "nbsp",   "not",    "ntilde", "oacute",
    "ocirc",  "ograve", "ordf",   "ordm",   "oslash", "otilde", "ouml",   "para",   "plusmn",
    "pound",  "quot",   "raquo",  "reg",    "sect",   "shy",    "sup1",   "sup2",   "sup3",
    "szlig",  "thorn",  "times",  "uacute", "ucirc",  "ugrave", "uml",    "uuml",   "yacute",
    "yen",    "yuml"};
static_assert(std::is_sorted(std::begin(kNames), std::end(kNames)));
constexpr std::size_t kLongestName = 6;

// What follows an ampersand.
bool startsNumber(std::string_view rest) {
  return rest.starts_with('#');
}

bool startsReference(std::string_view rest) {
  if (startsNumber(rest)) return true;
  const std::size_t end = rest.substr(0, kLongestName + 1).find(';');
  return end != rest.npos &&
         std::binary_search(std::begin(kNames), std::end(kNames), rest.substr(0, end));
}

struct Reference {
  char text[7];
  std::uint8_t size;
};
static_assert(sizeof(Reference) == 8);

Reference referenceOf(char c) {
  switch (c) {
    case '<':
      return {"&lt;", 4};
    case '>':
      return {"&gt;", 4};
    case '"':
      return {"&quot;", 6};
    case '\'':
      return {"&apos;", 6};
    default:
      return {"&amp;", 5};
  }
}

inline ByteBlock::Set escapedIn(ByteBlock block) {
  return block.equal('<') | block.equal('>') | block.equal('"') | block.equal('\'') |
         block.equal('&');
}

// Copies block by block what stands before the next character that may need a reference. There is
// always room for the rest of the text.
template <class StaysAsItIs>
inline char* putEscaped(XmlOutput& out, char* to, std::string_view text, StaysAsItIs staysAsItIs) {
  to = out.room(to, text.size());
  const char* from = text.data();
  const char* const end = from + text.size();
  while (from != end) {
    const auto left = static_cast<std::size_t>(end - from);
    const ByteBlock block = ByteBlock::load(from);
    const ByteBlock::Set escaped = escapedIn(block);
    block.store(to);
    // Guessed, so that the next block need not wait for what is found in this one.
    if (left >= ByteBlock::kSize && !escaped.any()) {
      from += ByteBlock::kSize;
      to += ByteBlock::kSize;
      continue;
    }
    const std::size_t plain = std::min(escaped.first(), left);
    from += plain;
    to += plain;
    if (from == end) break;
    const char c = *from++;
    if (c == '&' && staysAsItIs({from, left - plain - 1})) {
      *to++ = c;
      continue;
    }
    const Reference reference = referenceOf(c);
    // More than the rest needs as it stands, or each further reference might move all of the text.
    to = out.room(to, sizeof reference + left, left);
    std::memcpy(to, reference.text, sizeof reference.text);
    to += reference.size;
  }
  return to;
}

}  // namespace

char* putEscapedContent(XmlOutput& out, char* to, std::string_view text) {
  return putEscaped(out, to, text, startsReference);
}

char* putEscapedValue(XmlOutput& out, char* to, std::string_view text) {
  return putEscaped(out, to, text, startsNumber);
}

}  // namespace zantrel

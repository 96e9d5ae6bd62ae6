#include "xml/xml_escape.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "core/byte_order.h"
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

std::string_view referenceOf(char c) {
  switch (c) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return "&amp;";
  }
}

// A byte's highest bit is set where the byte of `word` is zero; above such a byte, perhaps where
// not.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
  constexpr std::uint64_t kOnes = ~std::uint64_t{0} / 255;
  return (word - kOnes) & ~word & (kOnes << 7);
}
constexpr std::uint64_t everyByte(char c) {
  return ~std::uint64_t{0} / 255 * static_cast<std::uint8_t>(c);
}

// Copies up to the first character that may need a reference, or the end, and moves both pointers
// there, eight bytes at a time: as many more than that may be written.
void copyPlain(const char*& from, const char* end, char*& to) {
  while (end - from >= 8) {
    const auto text =
        loadWord<std::uint64_t, std::endian::little>(reinterpret_cast<const std::uint8_t*>(from));
    std::memcpy(to, from, sizeof text);
    // A bit tells "&" from the single quote, and another "<" from ">".
    const std::uint64_t found = zeroBytes(text ^ everyByte('"')) |
                                zeroBytes((text | everyByte(1)) ^ everyByte('\'')) |
                                zeroBytes((text | everyByte(2)) ^ everyByte('>'));
    const int plain = std::countr_zero(found) / 8;
    from += plain;
    to += plain;
    if (plain != 8) return;
  }
  constexpr auto kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const char c : {'<', '>', '"', '\'', '&'}) escaped[static_cast<std::uint8_t>(c)] = true;
    return escaped;
  }();
  for (; from != end && !kEscaped[static_cast<std::uint8_t>(*from)]; ++from) *to++ = *from;
}

template <class StaysAsItIs>
inline void putEscaped(XmlOutput& out, std::string_view text, StaysAsItIs staysAsItIs) {
  constexpr std::size_t kOvershoot = 8;
  const char* from = text.data();
  const char* const end = from + text.size();
  while (from != end) {
    const auto left = static_cast<std::size_t>(end - from);
    char* to = out.room(left + kOvershoot);
    copyPlain(from, end, to);
    out.wrote(to);
    if (from == end) return;
    const char c = *from++;
    const std::string_view rest(from, static_cast<std::size_t>(end - from));
    if (c == '&' && staysAsItIs(rest))
      out.put(c);
    else
      out.put(referenceOf(c));
  }
}

}  // namespace

void putEscapedContent(XmlOutput& out, std::string_view text) {
  putEscaped(out, text, startsReference);
}

void putEscapedValue(XmlOutput& out, std::string_view text) {
  putEscaped(out, text, startsNumber);
}

}  // namespace zantrel

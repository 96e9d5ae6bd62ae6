#include "xml/xml_escape.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <iterator>

#include "xml/xml_output.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// Copies up to the first character that may need a reference, or the end, and moves both pointers
// there. Sixteen bytes more may be written.
#if defined(__SSE2__)
void copyPlain(const char*& from, const char* end, char*& to) {
  while (end - from >= 16) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), text);
    // A bit tells "&" from the single quote, and another "<" from ">".
    const __m128i one = _mm_or_si128(text, _mm_set1_epi8(1));
    const __m128i two = _mm_or_si128(text, _mm_set1_epi8(2));
    const __m128i escaped = _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('"')),
                                         _mm_or_si128(_mm_cmpeq_epi8(one, _mm_set1_epi8('\'')),
                                                      _mm_cmpeq_epi8(two, _mm_set1_epi8('>'))));
    const auto found = static_cast<std::uint32_t>(_mm_movemask_epi8(escaped));
    const int plain = found != 0 ? std::countr_zero(found) : 16;
    from += plain;
    to += plain;
    if (found != 0) return;
  }
#else
void copyPlain(const char*& from, const char* end, char*& to) {
#endif
  constexpr auto kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const char c : {'<', '>', '"', '\'', '&'}) escaped[static_cast<std::uint8_t>(c)] = true;
    return escaped;
  }();
  for (; from != end && !kEscaped[static_cast<std::uint8_t>(*from)]; ++from) *to++ = *from;
}

template <class StaysAsItIs>
inline void putEscaped(XmlOutput& out, std::string_view text, StaysAsItIs staysAsItIs) {
  constexpr std::size_t kOvershoot = 16;
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

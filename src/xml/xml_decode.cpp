// Repeated decoding in one pass. One round takes an "amp;" away behind an ampersand, and where none
// is left and the name of another character follows, it puts that character. So r rounds turn an
// ampersand followed by m times "amp;" into one followed by m - min(r, m) times "amp;", or when r
// is greater than m, into the character named behind them. Rounds cannot make new references of
// their results: nothing that they leave behind an ampersand was not behind it before.

#include "xml/xml_decode.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zantrel {

namespace {

struct Named {
  std::string_view name;  // with its semicolon
  char character;
};
constexpr Named kNamed[] = {{"lt;", '<'}, {"gt;", '>'}, {"quot;", '"'}, {"apos;", '\''}};

bool startsWith(const char* at, const char* end, std::string_view word) {
  return static_cast<std::size_t>(end - at) >= word.size() &&
         std::memcmp(at, word.data(), word.size()) == 0;
}

const Named* findNamed(const char* at, const char* end) {
  for (const Named& named : kNamed)
    if (startsWith(at, end, named.name)) return &named;
  return nullptr;
}

}  // namespace

std::size_t decodeReferences(char* text, std::size_t size, std::uint32_t times) {
  constexpr std::string_view kAmp = "amp;";
  const char* const end = text + size;
  const auto* from = static_cast<const char*>(std::memchr(text, '&', size));
  if (from == nullptr || times == 0) return size;
  char* to = text + (from - text);
  while (from != end) {
    // At an ampersand.
    ++from;
    std::size_t amps = 0;
    while (startsWith(from, end, kAmp)) {
      from += kAmp.size();
      ++amps;
    }
    const Named* const named = times > amps ? findNamed(from, end) : nullptr;
    *to++ = named != nullptr ? named->character : '&';
    if (named != nullptr) from += named->name.size();
    for (std::size_t left = amps - std::min<std::size_t>(times, amps); left > 0; --left)
      to = std::copy(kAmp.begin(), kAmp.end(), to);
    // To the next one.
    const auto rest = static_cast<std::size_t>(end - from);
    const auto* next = static_cast<const char*>(std::memchr(from, '&', rest));
    const std::size_t plain = next != nullptr ? static_cast<std::size_t>(next - from) : rest;
    std::memmove(to, from, plain);
    to += plain;
    from += plain;
  }
  return static_cast<std::size_t>(to - text);
}

}  // namespace zantrel

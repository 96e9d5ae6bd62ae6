// Encoded words: any text decodes to UTF-8 where it was UTF-8, and what was encoded is ASCII, in
// words of the length allowed, and decodes to what it was.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "core/charset/utf8_utf16.h"
#include "core/encode/encoded_words.h"
#include "core/log_null.h"
#include "core/string_buffer.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

std::string decode(std::string_view text) {
  LogNull log;
  StringBuffer out;
  require(decodeWords(text, out, log));
  return std::string(out.view());
}

void checkWords(std::string_view words) {
  constexpr std::size_t kLongestWord = 75;
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    require(end <= kLongestWord && words.starts_with("=?") && words.substr(0, end).ends_with("?="));
    words.remove_prefix(std::min(end + 1, words.size()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr std::string_view kCharsets[] = {"utf-8",  "iso-8859-1", "windows-1252", "iso-2022-jp",
                                            "euc-jp", "shift_jis",  "gb18030",      "utf-7"};
  const std::string_view charset = kCharsets[data[0] / 2 % std::size(kCharsets)];
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  const bool valid = isValidUtf8(asBytes(text));
  const std::string decoded = decode(text);
  if (valid) require(isValidUtf8(asBytes(decoded)));
  if (text.find("=?") == text.npos) require(decoded == text);

  LogNull log;
  StringBuffer words;
  const bool done =
      encodeWords(text, charset, data[0] % 2 != 0 ? WordCoding::B : WordCoding::Q, words, log);
  if (charset == "utf-8" || !valid) require(done == valid);
  if (!done) {
    require(words.empty());
    return 0;
  }
  checkWords(words.view());
  // Shift_JIS and its relatives have two codes for some characters, and Unicode two for some
  // of theirs.
  const bool exact = charset == "utf-8" || charset == "iso-8859-1" || charset == "gb18030";
  if (exact) require(decode(words.view()) == text);
  return 0;
}

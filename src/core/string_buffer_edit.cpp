// Editing, comparing and searching in a StringBuffer. Case is that of ASCII, except in
// toLowerCase().

#include <algorithm>

#include "core/ascii_text.h"
#include "core/data_buffer.h"
#include "core/encode/hex.h"
#include "core/string_buffer.h"
#include "core/text_search.h"

namespace zantrel {
void StringBuffer::trim2() {
  guard_.check();
  setString(trimmed(view()));
}

void StringBuffer::toLowerCase() {
  guard_.check();
  for (std::uint32_t i = 0; i < size_; ++i) {
    const auto byte = static_cast<unsigned char>(data_[i]);
    const bool capital = (byte >= 'A' && byte <= 'Z') || (byte >= 0xC0 && byte <= 0xDF);
    if (capital) data_[i] = static_cast<char>(byte + 32);
  }
}

void StringBuffer::toUpperCase() {
  guard_.check();
  for (std::uint32_t i = 0; i < size_; ++i) {
    if (data_[i] >= 'a' && data_[i] <= 'z') data_[i] = static_cast<char>(data_[i] - 32);
  }
}

std::uint32_t StringBuffer::replaceAllOccurances(std::string_view find,
                                                 std::string_view replacement) {
  const std::string_view text = view();
  const TextSearcher searcher(find);
  std::uint64_t count = 0;
  for (std::size_t at = searcher.find(text); at != std::string_view::npos;
       at = searcher.find(text, at + find.size())) {
    ++count;
  }
  if (count == 0) return 0;
  const std::uint64_t newSize = text.size() - count * find.size() + count * replacement.size();
  if (newSize > 0x7FFFFFFE) return 0;

  StringBuffer result = withCapacity(static_cast<std::size_t>(newSize));
  // Without storage the text stays as it was.
  if (newSize != 0 && result.capacity() == 0) return 0;
  std::size_t done = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::size_t at = searcher.find(text, done);
    result.append(text.substr(done, at - done));
    result.append(replacement);
    done = at + find.size();
  }
  result.append(text.substr(done));
  *this = std::move(result);
  return static_cast<std::uint32_t>(count);
}

bool StringBuffer::replaceFirstOccurance(std::string_view find, std::string_view replacement) {
  const std::string_view text = view();
  const std::size_t at = TextSearcher(find).find(text);
  if (at == std::string_view::npos) return false;
  const std::uint64_t newSize = std::uint64_t{text.size()} - find.size() + replacement.size();
  if (newSize > 0x7FFFFFFE) return false;
  StringBuffer result = withCapacity(static_cast<std::size_t>(newSize));
  if (newSize != 0 && result.capacity() == 0) return false;
  result.append(text.substr(0, at));
  result.append(replacement);
  result.append(text.substr(at + find.size()));
  *this = std::move(result);
  return true;
}

void StringBuffer::replaceChar(char from, char to) {
  guard_.check();
  if (size_ != 0) std::replace(data_, data_ + size_, from, to);
}

std::uint32_t StringBuffer::removeCharOccurances(char c) {
  guard_.check();
  if (size_ == 0) return 0;
  const std::uint32_t before = size_;
  setSize(static_cast<std::uint32_t>(std::remove(data_, data_ + size_, c) - data_));
  return before - size_;
}

void StringBuffer::toCRLF() {
  removeCharOccurances('\r');
  replaceAllOccurances("\n", "\r\n");
}

void StringBuffer::toLF() {
  replaceAllOccurances("\r\n", "\n");
}

bool StringBuffer::equals(std::string_view text) const {
  return view() == text;
}

bool StringBuffer::equalsIgnoreCase(std::string_view text) const {
  return equalsAsciiNoCase(view(), text);
}

bool StringBuffer::beginsWith(std::string_view prefix) const {
  return view().substr(0, prefix.size()) == prefix;
}

bool StringBuffer::beginsWithIgnoreCase(std::string_view prefix) const {
  return equalsAsciiNoCase(view().substr(0, prefix.size()), prefix);
}

bool StringBuffer::containsSubstring(std::string_view text) const {
  return TextSearcher(text).find(view()) != std::string_view::npos;
}

bool StringBuffer::containsSubstringNoCase(std::string_view text) const {
  return TextSearcher(text, TextSearcher::Case::IgnoreAscii).find(view()) != std::string_view::npos;
}

bool StringBuffer::hexStringToBinary(DataBuffer& out) const {
  return hexDecode(view(), out);
}

}  // namespace zantrel

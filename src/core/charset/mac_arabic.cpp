// Mac OS Arabic keeps two copies of much of ASCII: one that is set from left to right, and one with
// the high bit that is set from right to left. Apple's table of the page marks the second kind, the
// letters, and the digits as right to left; all bytes from A0 on are of that kind, and six below.

#include "core/charset/mac_arabic.h"

#include <algorithm>
#include <array>

namespace zantrel {
namespace {

constexpr bool isRightToLeft(unsigned byte) noexcept {
  return byte >= 0xA0 || byte == 0x81 || byte == 0x8B || byte == 0x8C || byte == 0x93 ||
         byte == 0x98 || byte == 0x9B;
}

/// The twins of ASCII; not the Arabic percent sign (A5), comma (AC), semicolon and question mark.
constexpr bool isTwin(unsigned byte) noexcept {
  return (byte >= 160 && byte <= 186 && byte != 165 && byte != 172) ||
         (byte >= 188 && byte <= 190) || (byte >= 219 && byte <= 223) ||
         (byte >= 251 && byte <= 253);
}

constexpr std::uint8_t kNoBreakSpace = 129;

constexpr auto kRewritten = [] {
  std::array<std::uint8_t, 256> bytes{};
  for (unsigned byte = 0; byte < 256; ++byte)
    bytes[byte] = static_cast<std::uint8_t>(isTwin(byte) ? byte + 128 : byte);
  bytes[kNoBreakSpace] = 160;
  return bytes;
}();

}  // namespace

void MacArabicRewriter::endRun(std::vector<std::uint8_t>& out) {
  out.insert(out.end(), run_.rbegin(), run_.rend());
  run_.clear();
}

void MacArabicRewriter::rewrite(ByteSpan in, bool last, std::vector<std::uint8_t>& out) {
  for (const std::uint8_t byte : in) {
    if (isRightToLeft(byte)) {
      run_.push_back(kRewritten[byte]);
      if (run_.size() == kLongestRun) endRun(out);
    } else {
      endRun(out);
      out.push_back(byte);
    }
  }
  if (last) endRun(out);
}

}  // namespace zantrel

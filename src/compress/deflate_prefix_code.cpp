#include "compress/deflate_prefix_code.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "compress/code_lengths.h"
#include "compress/deflate_format.h"

namespace zantrel::zee {

namespace {

constexpr std::size_t kMaxSymbols = kFixedLiteralSymbols;

// An entry is a frequency above a symbol's number.
constexpr unsigned kSymbolBits = 10;
constexpr std::uint32_t kSymbolMask = (1U << kSymbolBits) - 1;

class CodeLengths {
 public:
  explicit CodeLengths(std::span<const std::uint32_t> frequencies) {
    for (std::size_t i = 0; i < frequencies.size(); ++i)
      if (frequencies[i] != 0)
        entries_[used_++] = frequencies[i] << kSymbolBits | static_cast<std::uint32_t>(i);
    for (std::uint32_t i = 0; used_ < 2; ++i)
      if (frequencies[i] == 0) entries_[used_++] = 1U << kSymbolBits | i;
    sort();
    for (std::size_t i = 0; i < used_; ++i) weight_[i] = entries_[i] >> kSymbolBits;
  }

  void assign(unsigned maxBits, std::span<CodeWord> code) {
    std::array<std::uint32_t, kMaxCodeBits + 1> ofLength{};
    countCodeLengths(std::span(weight_).first(used_), std::span(ofLength).first(maxBits + 1));
    // The rarest symbols stand first and get the longest codes.
    std::size_t i = 0;
    for (unsigned bits = maxBits; bits > 0; --bits)
      for (std::uint32_t n = ofLength[bits]; n > 0; --n)
        code[entries_[i++] & kSymbolMask].length = static_cast<std::uint8_t>(bits);
  }

 private:
  // By frequency, equal ones by number: two stable passes over half the bits each.
  void sort() {
    constexpr unsigned kDigitBits = 9;
    std::array<std::uint32_t, kMaxSymbols> other;
    if (used_ < 64) {
      std::sort(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(used_));
      return;
    }
    std::uint32_t *from = entries_.data(), *to = other.data();
    for (unsigned shift = kSymbolBits; shift < kSymbolBits + 2 * kDigitBits; shift += kDigitBits) {
      std::array<std::uint16_t, 1U << kDigitBits> start{};
      for (std::size_t i = 0; i < used_; ++i) ++start[digit(from[i], shift, kDigitBits)];
      std::uint16_t sum = 0;
      for (std::uint16_t& n : start) sum = static_cast<std::uint16_t>(sum + std::exchange(n, sum));
      for (std::size_t i = 0; i < used_; ++i)
        to[start[digit(from[i], shift, kDigitBits)]++] = from[i];
      std::swap(from, to);
    }
  }
  static std::uint32_t digit(std::uint32_t entry, unsigned shift, unsigned bits) {
    return (entry >> shift) & ((1U << bits) - 1);
  }

  std::array<std::uint32_t, kMaxSymbols> entries_;
  std::array<std::uint32_t, kMaxSymbols> weight_;
  std::size_t used_ = 0;
};

unsigned reversed(unsigned bits, unsigned count) {
  bits = ((bits & 0x5555) << 1) | ((bits >> 1) & 0x5555);
  bits = ((bits & 0x3333) << 2) | ((bits >> 2) & 0x3333);
  bits = ((bits & 0x0F0F) << 4) | ((bits >> 4) & 0x0F0F);
  bits = ((bits & 0x00FF) << 8) | ((bits >> 8) & 0x00FF);
  return bits >> (16 - count);
}

}  // namespace

void buildPrefixCode(std::span<const std::uint32_t> frequencies, unsigned maxBits,
                     std::span<CodeWord> code) {
  for (CodeWord& word : code) word = {};
  CodeLengths(frequencies).assign(maxBits, code);
  assignCodeWords(code);
}

void assignCodeWords(std::span<CodeWord> code) {
  std::array<unsigned, kMaxCodeBits + 1> next{};
  for (const CodeWord& word : code) ++next[word.length];
  next[0] = 0;
  unsigned first = 0, shorter = 0;
  for (unsigned& n : next) {
    first = (first + shorter) << 1;
    shorter = n;
    n = first;
  }
  for (CodeWord& word : code)
    if (word.length != 0)
      word.bits = static_cast<std::uint16_t>(reversed(next[word.length]++, word.length));
}

}  // namespace zantrel::zee

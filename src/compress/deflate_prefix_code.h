#pragma once
// Prefix codes for measured frequencies, no code longer than allowed (RFC 1951, section 3.2.2).

#include <cstdint>
#include <span>

namespace zantrel::zee {

/// A code's bits, in the order in which they are written, below its length.
struct CodeWord {
  std::uint16_t bits = 0;
  std::uint8_t length = 0;  ///< 0 for a symbol that does not occur
};

/// Gives every symbol that occurs a code word of at most `maxBits` bits; the whole is as short as
/// a Huffman code unless that limit is met, then close to it. Fewer than two symbols that occur are
/// joined by unused ones, since some readers refuse a code of less than two words. The sum of the
/// frequencies must be below 2^18.
void buildPrefixCode(std::span<const std::uint32_t> frequencies, unsigned maxBits,
                     std::span<CodeWord> code);

/// The words of a canonical code whose lengths are set.
void assignCodeWords(std::span<CodeWord> code);

}  // namespace zantrel::zee

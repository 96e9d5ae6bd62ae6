#include "compress/bzip2_huffman.h"

#include <algorithm>

#include "compress/code_lengths.h"

namespace zantrel {

using namespace bzip2;

void bzip2CodeLengths(std::span<const std::uint32_t> frequencies, unsigned maxLength,
                      std::uint8_t* lengths) {
  const std::size_t n = frequencies.size();
  std::array<std::uint64_t, kMaxAlphabet> order;  // frequency, then symbol
  for (std::size_t i = 0; i < n; ++i)
    order[i] = std::uint64_t{std::max(frequencies[i], 1U)} << 16 | i;
  std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(n));
  std::array<std::uint32_t, kMaxAlphabet> weights;
  for (std::size_t i = 0; i < n; ++i) weights[i] = static_cast<std::uint32_t>(order[i] >> 16);
  std::array<std::uint32_t, kMaxCodeLength + 1> counts{};
  countCodeLengths({weights.data(), n}, std::span(counts).first(maxLength + 1));
  unsigned length = maxLength;
  for (std::size_t i = 0; i < n; ++i) {
    while (counts[length] == 0) --length;
    --counts[length];
    lengths[order[i] & 0xFFFF] = static_cast<std::uint8_t>(length);
  }
}

void bzip2Codes(std::span<const std::uint8_t> lengths, std::uint32_t* codes) {
  std::uint32_t code = 0;
  for (unsigned length = 1; length <= kMaxCodeLength; ++length, code <<= 1)
    for (std::size_t i = 0; i < lengths.size(); ++i)
      if (lengths[i] == length) codes[i] = code++;
}

void Bzip2DecodeTable::build(std::span<const std::uint8_t> lengths) noexcept {
  std::array<std::uint32_t, kMaxCodeLength + 2> first{};  // of each length, in symbols_
  for (const std::uint8_t length : lengths) ++first[length + 1U];
  for (std::size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
  auto place = first;
  for (std::size_t i = 0; i < lengths.size(); ++i)
    symbols_[place[lengths[i]]++] = static_cast<std::uint16_t>(i);

  quick_.fill(0);
  std::size_t filled = 0;
  std::uint64_t code = 0;  // the next one, as a number of kMaxCodeLength bits
  for (unsigned length = 1; length <= kMaxCodeLength; ++length) {
    const unsigned shift = kMaxCodeLength - length;
    offset_[length] = first[length] - static_cast<std::uint32_t>(code >> shift);
    code += std::uint64_t{place[length] - first[length]} << shift;
    limit_[length] = static_cast<std::uint32_t>(std::min(code, std::uint64_t{1} << kMaxCodeLength));
    if (length > kQuickBits) continue;
    for (std::uint32_t i = first[length]; i < place[length] && filled < quick_.size(); ++i) {
      const std::size_t end = std::min(filled + (1U << (kQuickBits - length)), quick_.size());
      const unsigned entry = symbols_[i] * 32U + length;
      for (; filled < end; ++filled) quick_[filled] = static_cast<std::uint16_t>(entry);
    }
  }
}

unsigned Bzip2DecodeTable::takeLong(Bzip2BitInput& in) const noexcept {
  const auto code = static_cast<std::uint32_t>(in.peek(kMaxCodeLength));
  for (unsigned length = kQuickBits + 1; length <= kMaxCodeLength; ++length) {
    if (code >= limit_[length]) continue;
    in.drop(length);
    return symbols_[(code >> (kMaxCodeLength - length)) + offset_[length]];
  }
  return kNone;
}

}  // namespace zantrel

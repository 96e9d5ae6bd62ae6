#include "compress/bzip2_huffman.h"

#include <algorithm>

namespace zantrel {

namespace {

using namespace bzip2;

using LengthCounts = std::array<std::uint32_t, kMaxAlphabet + 1>;

// Depths of the leaves of a Huffman tree over weights in rising order, in place (A. Moffat and
// J. Katajainen, "In-place calculation of minimum-redundancy codes", 1995).
void weightsToDepths(std::span<std::uint32_t> a) noexcept {
  const std::size_t n = a.size();
  // Join the two lightest trees, leaves or inner nodes, until one is left; keep parents.
  std::size_t leaf = 0;
  std::size_t root = 0;
  for (std::size_t next = 0; next + 1 < n; ++next) {
    const auto lightest = [&](bool& isNode) {
      isNode = leaf >= n || (root < next && a[root] < a[leaf]);
      return isNode ? root++ : leaf++;
    };
    bool isNode = false;
    const std::size_t first = lightest(isNode);
    const std::uint32_t firstWeight = a[first];
    if (isNode) a[first] = static_cast<std::uint32_t>(next);
    const std::size_t second = lightest(isNode);
    const std::uint32_t secondWeight = a[second];
    if (isNode) a[second] = static_cast<std::uint32_t>(next);
    a[next] = firstWeight + secondWeight;
  }
  // Parents to depths of inner nodes.
  a[n - 2] = 0;
  for (std::size_t i = n - 2; i-- > 0;) a[i] = a[a[i]] + 1;
  // Depths of inner nodes to depths of leaves: what inner nodes leave free on a level is leaves.
  std::size_t node = n - 1;  // inner nodes not yet counted
  std::size_t next = n;
  std::size_t available = 1;
  for (std::uint32_t depth = 0; available > 0; ++depth) {
    std::size_t used = 0;
    for (; node > 0 && a[node - 1] == depth; --node) ++used;
    for (; available > used; --available) a[--next] = depth;
    available = 2 * used;
  }
}

// Shortens codes that are too long and lengthens the cheapest others until the code fits again.
void limitLengths(LengthCounts& counts, unsigned maxLength) noexcept {
  for (std::size_t length = maxLength + 1; length < counts.size(); ++length) {
    counts[maxLength] += counts[length];
    counts[length] = 0;
  }
  std::uint64_t space = 0;  // in codes of the greatest length
  for (unsigned length = 1; length <= maxLength; ++length)
    space += std::uint64_t{counts[length]} << (maxLength - length);
  for (; space > std::uint64_t{1} << maxLength; --space) {
    unsigned length = maxLength - 1;
    while (counts[length] == 0) --length;
    --counts[length];
    counts[length + 1] += 2;  // the lengthened code, and one that was too long as its neighbour
    --counts[maxLength];
  }
}

}  // namespace

void bzip2CodeLengths(std::span<const std::uint32_t> frequencies, unsigned maxLength,
                      std::uint8_t* lengths) {
  const std::size_t n = frequencies.size();
  std::array<std::uint64_t, kMaxAlphabet> order;  // frequency, then symbol
  for (std::size_t i = 0; i < n; ++i)
    order[i] = std::uint64_t{std::max(frequencies[i], 1U)} << 16 | i;
  std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(n));
  std::array<std::uint32_t, kMaxAlphabet> depths;
  for (std::size_t i = 0; i < n; ++i) depths[i] = static_cast<std::uint32_t>(order[i] >> 16);
  weightsToDepths({depths.data(), n});

  LengthCounts counts{};
  for (std::size_t i = 0; i < n; ++i) ++counts[depths[i]];
  limitLengths(counts, maxLength);
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

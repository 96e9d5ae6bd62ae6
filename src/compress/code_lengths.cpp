// The two-queue form of Huffman's algorithm, in place (A. Moffat and J. Katajainen, "In-place
// calculation of minimum-redundancy codes", 1995). Codes that grew too long are cut and shorter
// ones lengthened until the set is complete again, which costs next to nothing, as it happens to
// the rarest symbols only.

#include "compress/code_lengths.h"

#include <algorithm>
#include <cstddef>

namespace zantrel {

namespace {

// Joins the two lightest trees, leaves or inner nodes, until one is left. Leaves the parent of each
// inner node in its weight.
void mergeWeights(std::span<std::uint32_t> weights) noexcept {
  std::size_t leaf = 0, root = 0;
  const auto lightest = [&](std::size_t next) {
    if (leaf >= weights.size() || (root < next && weights[root] < weights[leaf])) {
      const std::uint32_t weight = weights[root];
      weights[root++] = static_cast<std::uint32_t>(next);
      return weight;
    }
    return weights[leaf++];
  };
  for (std::size_t next = 0; next + 1 < weights.size(); ++next) {
    const std::uint32_t first = lightest(next);
    weights[next] = first + lightest(next);
  }
}

// Restores Kraft's equation: what was cut to the greatest length took more room than there is.
void limitLengths(std::span<std::uint32_t> ofLength) noexcept {
  const std::size_t longest = ofLength.size() - 1;
  std::uint64_t taken = 0;  // in codes of the greatest length
  for (std::size_t length = 1; length <= longest; ++length)
    taken += std::uint64_t{ofLength[length]} << (longest - length);
  for (; taken > std::uint64_t{1} << longest; --taken) {
    // A code one level up gets longer and its room is shared with one of the longest.
    std::size_t length = longest - 1;
    while (ofLength[length] == 0) --length;
    --ofLength[length];
    ofLength[length + 1] += 2;
    --ofLength[longest];
  }
}

}  // namespace

void countCodeLengths(std::span<std::uint32_t> weights,
                      std::span<std::uint32_t> ofLength) noexcept {
  mergeWeights(weights);
  // Parents to depths of inner nodes.
  const std::size_t inner = weights.size() - 1;
  weights[inner - 1] = 0;
  for (std::size_t i = inner - 1; i-- > 0;) weights[i] = weights[weights[i]] + 1;
  // What inner nodes leave free on a level is leaves.
  const std::size_t longest = ofLength.size() - 1;
  std::uint32_t available = 1;
  std::size_t depth = 0;
  for (std::size_t node = inner; available > 0; ++depth) {
    std::uint32_t nodes = 0;
    for (; node > 0 && weights[node - 1] == depth; --node) ++nodes;
    ofLength[std::min(depth, longest)] += available - nodes;
    available = 2 * nodes;
  }
  if (depth > longest + 1) limitLengths(ofLength);
}

}  // namespace zantrel

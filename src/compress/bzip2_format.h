#pragma once
// The numbers of the bzip2 format, as its documentation (bzip2 1.0) and its decoders know them.

#include <cstddef>
#include <cstdint>

namespace zantrel::bzip2 {

constexpr std::size_t kBlockUnit = 100'000;           // a stream says how many of these a block has
constexpr std::size_t kMaxBlock = 9 * kBlockUnit;     // bytes after the first run-length stage
constexpr std::uint64_t kBlockMark = 0x314159265359;  // 48 bits in front of a block: pi
constexpr std::uint64_t kEndMark = 0x177245385090;    // and behind the last: its square root

constexpr std::size_t kMaxAlphabet = 258;  // two run symbols, positions 1 to 255, end of block
constexpr std::size_t kMinTables = 2;
constexpr std::size_t kMaxTables = 6;
constexpr std::size_t kGroup = 50;  // symbols that share one choice of table
// The most that a block can need: a symbol for each byte, and the end.
constexpr std::size_t kMaxSelectors = kMaxBlock / kGroup + 2;
constexpr unsigned kMaxCodeLength = 20;

constexpr unsigned kRunA = 0;  // digits 1 and 2 of a run length in the bijective base 2
constexpr unsigned kRunB = 1;

// Four equal bytes are followed by the count of further ones.
constexpr std::size_t kRunThreshold = 4;

}  // namespace zantrel::bzip2

#pragma once
// Writes a block in whichever of the three forms is the shortest for it.

#include <cstddef>
#include <cstdint>

#include "compress/deflate_bit_writer.h"
#include "compress/deflate_block.h"

namespace zantrel::zee {

/// Most bytes that a block of `size` bytes takes, with the slack that the writer needs behind it.
constexpr std::size_t maxBlockOutput(std::size_t size) noexcept {
  return size + 5 * (size / kMaxStored + 1) + 1 + BitWriter::kSlack;
}

/// `bytes` are what `count` sequences stand for; three behind them can be read. `out` must have
/// room for maxBlockOutput(size).
void writeBlock(BitWriter& out, const std::uint8_t* bytes, std::size_t size,
                const Sequence* sequences, std::size_t count, const Frequencies& frequencies,
                bool last);

/// One stored block for every 65,535 bytes, and one where there are none.
void writeStored(BitWriter& out, const std::uint8_t* bytes, std::size_t size, bool last);

}  // namespace zantrel::zee

#pragma once
// Where a block should end: when codes of their own pay for what comes next.

#include <cstdint>

#include "compress/deflate_block.h"

namespace zantrel::zee {

/// True when `next` is so different from the block before it that a block of its own saves more
/// than another header costs.
bool worthSplitting(const Frequencies& block, const Frequencies& next) noexcept;

/// Bits, in 1/65536, that an ideal code for these frequencies needs in all. Integers only, so that
/// every machine decides alike.
std::uint64_t idealBits(const std::uint32_t* frequencies, std::size_t count) noexcept;

}  // namespace zantrel::zee

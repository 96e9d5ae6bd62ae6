#pragma once

#include <cstdint>
#include <span>

namespace zantrel {

/// Counts the lengths of an optimal prefix code. `weights` are two or more, in rising order and
/// none of them 0, and are used up; `ofLength` is all zeros and gets, for each length from 1 to its
/// last index, how many codes have it: the lightest symbols have the longest ones.
void countCodeLengths(std::span<std::uint32_t> weights, std::span<std::uint32_t> ofLength) noexcept;

}  // namespace zantrel

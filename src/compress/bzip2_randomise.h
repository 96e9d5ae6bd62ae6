#pragma once

#include <cstddef>
#include <cstdint>

namespace zantrel {

/// Takes back the disturbance by which encoders older than 0.9.5 kept repetitive blocks from
/// slowing down their sort.
void bzip2Randomise(std::uint8_t* block, std::size_t size) noexcept;

}  // namespace zantrel

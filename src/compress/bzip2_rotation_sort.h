#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/bytes.h"

namespace zantrel {

/// Sorts the rotations of blocks, in time linear in their size whatever they hold.
class Bzip2RotationSort {
 public:
  Bzip2RotationSort();
  ~Bzip2RotationSort();

  /// Writes the last column of the sorted rotations of a block of 1 to kMaxBlock bytes, and gives
  /// the row at which the block itself stands.
  std::size_t run(ByteSpan block, std::uint8_t* lastColumn);

 private:
  struct Memory;
  std::unique_ptr<Memory> memory_;
};

}  // namespace zantrel

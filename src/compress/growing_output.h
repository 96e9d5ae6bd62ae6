#pragma once
// Output of a length not known before, in a byte buffer.

#include <algorithm>
#include <cstdint>

#include "core/bytes.h"
#include "core/data_buffer.h"

namespace zantrel {

/// Appends as DataBuffer::append() does, but doubles the room when it runs out: the buffer's own
/// small steps would make large output quadratic. False when storage cannot be had.
inline bool appendDoubling(DataBuffer& out, ByteSpan bytes) {
  if (bytes.size() > out.capacity() - out.getSize()) {
    constexpr std::uint64_t kLargest = 0xFFFFFFFF;
    const std::uint64_t room = kLargest - out.getSize();
    const std::uint64_t wanted = std::max<std::uint64_t>(bytes.size(), out.getSize());
    if (!out.reserve(static_cast<std::size_t>(std::min(wanted, room))) &&
        !out.reserve(bytes.size()))
      return false;
  }
  return out.append(bytes);
}

}  // namespace zantrel

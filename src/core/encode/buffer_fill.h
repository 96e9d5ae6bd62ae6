#pragma once
// What the buffer forms of all encodings share: one reservation of the size that the engine needs
// at most, then the engine writes straight into the buffer.

#include <cstddef>
#include <cstdint>
#include <limits>

namespace zantrel {

/// A size computed in 64 bits as size_t; on 32-bit targets what does not fit becomes the largest
/// size, which no buffer grants.
constexpr std::size_t clampSize(std::uint64_t size) noexcept {
  constexpr std::uint64_t kMax = std::numeric_limits<std::size_t>::max();
  return static_cast<std::size_t>(size < kMax ? size : kMax);
}

/// Appends what `fill(pointer)` writes and counts, at most `maxSize`. False when storage cannot be
/// had; the buffer is then unchanged.
template <class Buffer, class Fill>
bool appendFilled(Buffer& out, std::size_t maxSize, const Fill& fill) {
  if (maxSize == 0) return true;
  auto* const room = out.prepare(maxSize);
  if (room == nullptr) return false;
  out.commit(fill(room));
  return true;
}

}  // namespace zantrel

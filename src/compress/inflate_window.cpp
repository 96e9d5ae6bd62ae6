#include "compress/inflate_window.h"

#include <algorithm>
#include <cstring>

namespace zantrel::inflate {

void Window::append(const std::uint8_t* bytes, std::size_t count) noexcept {
  if (count >= kSize) {
    std::memcpy(ring_, bytes + (count - kSize), kSize);
    filled_ = kSize;
    next_ = 0;
    return;
  }
  const std::size_t first = std::min(count, kSize - next_);
  if (first != 0) std::memcpy(ring_ + next_, bytes, first);
  if (count > first) std::memcpy(ring_, bytes + first, count - first);
  next_ = (next_ + count) % kSize;
  filled_ = std::min(kSize, filled_ + count);
}

std::size_t Window::copy(std::uint8_t* to, std::size_t back, std::size_t count) const noexcept {
  count = std::min(count, back);
  const std::size_t from = (next_ + kSize - back) % kSize;
  const std::size_t first = std::min(count, kSize - from);
  std::memcpy(to, ring_ + from, first);
  if (count > first) std::memcpy(to + first, ring_, count - first);
  return count;
}

std::size_t Window::copyWide(std::uint8_t* to, std::size_t back, std::size_t count) const noexcept {
  const std::size_t from = (next_ + kSize - back) % kSize;
  if (count > back || count > kSize - from) return copy(to, back, count);
  for (std::size_t done = 0; done < count; done += kOvershoot)
    std::memcpy(to + done, ring_ + from + done, kOvershoot);
  return count;
}

}  // namespace zantrel::inflate

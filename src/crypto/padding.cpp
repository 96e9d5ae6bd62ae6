#include "crypto/padding.h"

#include <algorithm>
#include <cstring>

#include "platform/random.h"

namespace zantrel {

namespace {

constexpr bool isCounted(int scheme) {
  return scheme == kPaddingCounted || scheme == kPaddingRandomCounted;
}

}  // namespace

std::size_t paddingSize(int scheme, std::size_t length, std::size_t blockSize) noexcept {
  const std::size_t block = blockSize == 8 ? 8 : 16;
  if (isCounted(scheme)) return block - length % block;
  if (scheme < kPaddingCounted || scheme > kPaddingBlanks) return 0;
  return (block - length % block) % block;
}

void writePadding(int scheme, std::uint8_t* padding, std::size_t size) {
  if (size == 0) return;
  switch (scheme) {
    case kPaddingCounted:
      std::memset(padding, static_cast<int>(size), size);
      break;
    case kPaddingRandomCounted:
      randomBytes(padding, size);
      padding[size - 1] = static_cast<std::uint8_t>(size);
      break;
    case kPaddingRandom:
      randomBytes(padding, size);
      break;
    case kPaddingBlanks:
      std::memset(padding, ' ', size);
      break;
    default:
      std::memset(padding, 0, size);
  }
}

std::size_t removablePadding(int scheme, const std::uint8_t* text, std::size_t length) noexcept {
  if (!isCounted(scheme) || length == 0) return 0;
  return std::min<std::size_t>(text[length - 1], length);
}

std::size_t maxRemovablePadding(int scheme) noexcept {
  return isCounted(scheme) ? 255 : 0;
}

}  // namespace zantrel

#pragma once
// Adler-32 (RFC 1950, section 8): the sum of the bytes, and the sum of these sums, modulo 65521.

#include <cstdint>

#include "core/bytes.h"
#include "core/zantrel_object.h"

namespace zantrel {

/// Over bytes in one piece or in many.
class Adler32 final : public ZantrelObject {
 public:
  void beginStream() noexcept { value_ = kEmpty; }
  void moreData(ByteSpan bytes) noexcept { value_ = extend(value_, bytes); }
  /// The checksum of all data since beginStream().
  std::uint32_t endStream() const noexcept { return value_; }

  static std::uint32_t getAdler(ByteSpan bytes) noexcept { return extend(kEmpty, bytes); }

  /// The checksum of some data followed by `bytes`, given that of the data (1 for none).
  static std::uint32_t extend(std::uint32_t adler, ByteSpan bytes) noexcept;

 private:
  static constexpr std::uint32_t kEmpty = 1;
  std::uint32_t value_ = kEmpty;
};

}  // namespace zantrel

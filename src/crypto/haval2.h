#pragma once
// HAVAL (Y. Zheng, J. Pieprzyk, J. Seberry, "HAVAL - A One-Way Hashing Algorithm with Variable
// Length of Output", 1992): 128 to 256 bits in 3 to 5 passes. Legacy: collisions of three passes
// are known.

#include <array>
#include <cstddef>
#include <cstdint>

#include "crypto/digest.h"

namespace zantrel {

class HavalState final {
 public:
  static constexpr std::size_t kBlockBytes = 128;
  static constexpr std::size_t kMaxDigestBytes = 32;
  static constexpr const char* kAbortText = "Digest HAVAL aborted by application";

  HavalState() = default;
  HavalState(int bits, int passes) : bits_(bits), passes_(passes) {}

  std::size_t digestBytes() const noexcept { return static_cast<std::size_t>(bits_) / 8; }
  void start() noexcept;
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
  void finish(ByteSpan rest, std::uint64_t total, std::uint8_t* out);

 private:
  void fold() noexcept;

  std::array<std::uint32_t, 8> words_;
  int bits_ = 256;
  int passes_ = 3;
};

class Haval2 final : public Digest<HavalState> {
 public:
  static constexpr int kDefaultBits = 256;
  static constexpr int kDefaultPasses = 3;

  /// Any size and number of passes: legalBits() and legalPasses() of them are used.
  explicit Haval2(int bits = kDefaultBits, int passes = kDefaultPasses)
      : Digest(HavalState(legalBits(bits), legalPasses(passes))) {}

  /// The largest of 128, 160, 192, 224 and 256 that is not above `bits`; 128 when none is.
  static int legalBits(int bits) noexcept;
  /// The nearest of 3, 4 and 5.
  static int legalPasses(int passes) noexcept;
};

}  // namespace zantrel

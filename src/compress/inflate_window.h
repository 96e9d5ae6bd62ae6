#pragma once
// The last 32,768 bytes that inflate has given away, which later matches may go back to.

#include <cstddef>
#include <cstdint>

namespace zantrel::inflate {

class Window {
 public:
  static constexpr std::size_t kSize = 32768;
  /// Bytes that copy() may write past the end of what it copies.
  static constexpr std::size_t kOvershoot = 32;

  void clear() noexcept { filled_ = next_ = 0; }
  /// How far back copy() may go.
  std::size_t filled() const noexcept { return filled_; }

  void append(const std::uint8_t* bytes, std::size_t count) noexcept;

  /// Copies what begins `back` bytes before the end: `count` bytes, or fewer where the window ends.
  /// Returns how many.
  std::size_t copy(std::uint8_t* to, std::size_t back, std::size_t count) const noexcept;
  /// The same where kOvershoot bytes behind the target may be overwritten.
  std::size_t copyWide(std::uint8_t* to, std::size_t back, std::size_t count) const noexcept;

 private:
  std::size_t filled_ = 0;
  std::size_t next_ = 0;  // of the ring: where the next byte goes
  std::uint8_t ring_[kSize + kOvershoot];
};

}  // namespace zantrel::inflate

#pragma once
// Telling early what cannot be compressed: packed, encrypted or random bytes.

#include <array>
#include <cstddef>
#include <cstdint>

namespace zantrel::zee {

/// Judges the stream a piece at a time. A piece is noise when its bytes are spread as evenly as
/// chance spreads them, and nothing in it was seen in the noise before it.
class NoiseDetector final {
 public:
  /// Bytes of a piece.
  static constexpr std::size_t kPiece = 4096;

  /// Forgets what was seen.
  void reset() noexcept { places_.fill(0); }

  /// `position` is the first byte's place in the stream, modulo 2^32; as many bytes of it as are
  /// there, at most 32,768, can be read before `p`.
  bool isNoise(const std::uint8_t* p, std::uint32_t position, std::size_t history) noexcept;

 private:
  static constexpr unsigned kHashBits = 13;

  bool repeats(const std::uint8_t* p, std::uint32_t position, std::size_t history) noexcept;

  std::array<std::uint16_t, std::size_t{1} << kHashBits> places_;
};

}  // namespace zantrel::zee

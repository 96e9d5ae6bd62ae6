#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/bytes.h"

namespace zantrel {

/// Undoes the Burrows-Wheeler transform of one block after the other.
class Bzip2Inverse {
 public:
  Bzip2Inverse();
  ~Bzip2Inverse();

  /// Replaces the last column of the sorted rotations by the text whose rotation stands at row
  /// `origin`, which must be below the size. Any column is the transform of something.
  void run(std::uint8_t* block, std::size_t size, std::size_t origin);

 private:
  struct Segment;

  template <class Run>
  static void byRuns(ByteSpan column, const Run& run) noexcept;
  void makeRows(ByteSpan column) noexcept;
  void followOneChain(std::uint8_t* text, std::size_t size, std::size_t origin) const noexcept;
  void followLanes(std::uint8_t* text, std::size_t size, std::size_t origin);
  void joinSegments(std::uint8_t* text, std::size_t size) const noexcept;

  // The first byte of a rotation; above it the row of the next one.
  std::unique_ptr<std::uint32_t[]> rows_;
  std::unique_ptr<Segment[]> segments_;
  std::unique_ptr<std::uint8_t[]> lanes_;  // none before the first large block
};

}  // namespace zantrel

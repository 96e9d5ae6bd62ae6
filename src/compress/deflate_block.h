#pragma once
// A block under way: what its bytes were found to be, and how often each symbol occurs.

#include <array>
#include <cstddef>
#include <cstdint>

#include "compress/deflate_format.h"

namespace zantrel::zee {

/// So many literals, then a match; length 0 is no match.
struct Sequence {
  std::uint32_t literals;
  std::uint16_t lengthAndSlot;  ///< the length below the slot of the distance
  std::uint16_t distance;

  static constexpr unsigned kLengthBits = 9;
  unsigned length() const noexcept { return lengthAndSlot & ((1U << kLengthBits) - 1); }
  unsigned slot() const noexcept { return lengthAndSlot >> kLengthBits; }
};

struct Frequencies {
  /// Literals, the end of the block, lengths. Without the two symbols that have no meaning.
  std::array<std::uint32_t, kLiteralSymbols> literal{};
  std::array<std::uint32_t, kDistanceSymbols> distance{};

  void add(const Frequencies& other) noexcept {
    for (std::size_t i = 0; i < literal.size(); ++i) literal[i] += other.literal[i];
    for (std::size_t i = 0; i < distance.size(); ++i) distance[i] += other.distance[i];
  }
};

/// The bytes themselves stay in the window; literals are taken from there.
class Block final {
 public:
  static constexpr std::size_t kMaxSequences = 32768;

  const Sequence* sequences() const noexcept { return sequences_.data(); }
  std::size_t count() const noexcept { return count_; }
  std::size_t room() const noexcept { return kMaxSequences - count_; }
  void clear() noexcept { count_ = 0; }
  /// Drops the first n sequences.
  void removeFront(std::size_t n) noexcept;

  /// Adds sequences to a block, which has room for them, until it is destroyed.
  class Writer {
   public:
    Writer(Block& block, Frequencies& counts) noexcept
        : block_(block), next_(block.sequences_.data() + block.count_), counts_(counts) {}
    ~Writer() { block_.count_ = static_cast<std::size_t>(next_ - block_.sequences_.data()); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// A literal of the next sequence.
    void countLiteral(std::uint8_t byte) noexcept { ++counts_.literal[byte]; }
    void addMatch(std::size_t literals, unsigned length, unsigned distance) noexcept {
      const unsigned slot = distanceSlot(distance);
      *next_++ = {static_cast<std::uint32_t>(literals),
                  static_cast<std::uint16_t>(length | slot << Sequence::kLengthBits),
                  static_cast<std::uint16_t>(distance)};
      ++counts_.literal[kFirstLengthSymbol + kLengths.of[length]];
      ++counts_.distance[slot];
    }
    /// Those behind the last match.
    void addLiterals(std::size_t literals) noexcept {
      if (literals > 0) *next_++ = {static_cast<std::uint32_t>(literals), 0, 0};
    }

   private:
    Block& block_;
    Sequence* next_;
    Frequencies& counts_;
  };

 private:
  std::size_t count_ = 0;
  std::array<Sequence, kMaxSequences> sequences_;
};

}  // namespace zantrel::zee

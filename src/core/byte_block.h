#pragma once
// A few bytes at once, for loops that run up to the next byte of some kinds: load a block, ask
// which of its bytes are of the kinds, and go on from the first. No choice at run time: what every
// processor of a kind has is used.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/byte_order.h"
#include "platform/cpu_features.h"
#if defined(ZT_X86_64)
#include "core/byte_block_x86.h"
#endif

namespace zantrel {

/// Eight bytes in a word, for any processor.
class WordBlock {
 public:
  static constexpr std::size_t kSize = 8;

  /// Which bytes of a block are of some kinds.
  class Set {
   public:
    friend Set operator|(Set a, Set b) { return Set(a.highBits_ | b.highBits_); }
    Set operator~() const { return Set(~highBits_ & kHighBits); }
    bool any() const { return highBits_ != 0; }
    /// The place of the first one, or kSize without any.
    std::size_t first() const { return static_cast<std::size_t>(std::countr_zero(highBits_)) / 8; }

   private:
    friend class WordBlock;
    explicit Set(std::uint64_t highBits) : highBits_(highBits) {}
    std::uint64_t highBits_;
  };

  static WordBlock load(const char* from) {
    return WordBlock(
        loadWord<std::uint64_t, std::endian::little>(reinterpret_cast<const std::uint8_t*>(from)));
  }
  void store(char* to) const {
    storeWord<std::endian::little>(bytes_, reinterpret_cast<std::uint8_t*>(to));
  }
  Set equal(char c) const {
    const std::uint64_t zeros = bytes_ ^ every(static_cast<std::uint8_t>(c));
    return Set(~(((zeros & ~kHighBits) + ~kHighBits) | zeros) & kHighBits);
  }
  /// Bytes of at most `most`, which is below 127.
  Set atMost(std::uint8_t most) const {
    const auto above = static_cast<std::uint8_t>(most + 1);
    return Set(~((bytes_ | kHighBits) - every(above)) & ~bytes_ & kHighBits);
  }

 private:
  static constexpr std::uint64_t kOnes = ~std::uint64_t{0} / 255;
  static constexpr std::uint64_t kHighBits = kOnes << 7;
  static constexpr std::uint64_t every(std::uint8_t byte) { return kOnes * byte; }

  explicit WordBlock(std::uint64_t bytes) : bytes_(bytes) {}
  std::uint64_t bytes_;
};

#if defined(ZT_X86_64)
using ByteBlock = VectorBlock;
#else
using ByteBlock = WordBlock;
#endif

/// Copies a short text in whole blocks: up to kSize - 1 bytes behind it are read, and as many
/// behind the copy written. The result is the end of the copy.
inline char* copyBlocks(const char* from, std::size_t size, char* to) {
  for (std::size_t done = 0; done < size; done += ByteBlock::kSize)
    ByteBlock::load(from + done).store(to + done);
  return to + size;
}

}  // namespace zantrel

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/bytes.h"

namespace zantrel {

/// Makes .Z data with codes of up to 16 bits. The table is cleared when it is full and has come to
/// fit the text less well.
class LzwEncoder {
 public:
  LzwEncoder();

  void add(ByteSpan in);
  /// Writes the last code.
  void finish();
  /// What is written, until it is dropped.
  ByteSpan output() const noexcept { return out_; }
  void dropOutput() noexcept { out_.clear(); }

 private:
  struct Entry {
    std::uint32_t string;  // code of all but the last byte, and that byte
    std::uint32_t code;
  };

  Entry& find(std::uint32_t string) noexcept;
  void putCode(unsigned code);
  void fillGroup();
  void clearTable() noexcept;
  void clearIfWorse();

  std::unique_ptr<Entry[]> table_;
  unsigned next_;         // the code that is defined next
  unsigned current_;      // of the bytes not yet written; kNone at the beginning
  unsigned width_;        // bits of a code
  unsigned inGroup_ = 0;  // codes written
  std::uint64_t bits_ = 0;
  unsigned bitCount_ = 0;
  std::vector<std::uint8_t> out_;

  // Since the table was cleared:
  std::uint64_t inBytes_ = 0;
  std::uint64_t outBits_ = 0;
  std::uint64_t checkAt_ = 0;
  std::uint64_t bestRatio_ = 0;
};

}  // namespace zantrel

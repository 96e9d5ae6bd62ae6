#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "compress/lzw_format.h"
#include "core/bytes.h"

namespace zantrel {

class LogBase;

/// Expands .Z data. The format has no end and no checksum: data that are cut off behind a code are
/// a shorter text.
class LzwDecoder {
 public:
  enum class Status { hasOutput, needsInput, failed };

  /// The next piece of input, which must stay where it is until advance() needs more.
  void feed(ByteSpan in) noexcept { in_ = in; }
  /// Goes on until output() holds a piece, which is to be taken before the next call, the input is
  /// used up, or the data turn out to be wrong, which is logged.
  Status advance(LogBase& log);
  ByteSpan output() const noexcept { return {output_.data(), outputSize_}; }
  /// There is no more input: true if the header was there, else the reason is logged.
  bool finish(LogBase& log) const;

 private:
  static constexpr unsigned kNone = 0xFFFF'FFFF;

  bool readHeader(LogBase& log);
  bool takeCode(unsigned& code) noexcept;
  void skipGroup() noexcept;
  void clearTable() noexcept;
  bool isDefined(unsigned code) const noexcept;
  void define(unsigned follower) noexcept;
  void writeString(unsigned code) noexcept;

  ByteSpan in_;
  std::size_t headerSize_ = 0;
  std::array<std::uint8_t, lzw::kHeaderBytes> header_;

  unsigned maxBits_ = 0;
  bool blockMode_ = false;
  unsigned width_ = 0;    // bits of a code
  unsigned widest_ = 0;   // codes get wider when the next one to be defined is greater
  unsigned inGroup_ = 0;  // codes taken
  unsigned toSkip_ = 0;   // bits
  std::uint64_t bits_ = 0;
  unsigned bitCount_ = 0;

  unsigned next_ = 0;          // the code that is defined next
  unsigned previous_ = kNone;  // the code before, unless the table was cleared
  unsigned pending_ = kNone;   // a code whose string is not written yet
  // Strings by code: their beginning as a code, their first and last byte, their length.
  std::array<std::uint16_t, lzw::kMaxCodes> prefix_;
  std::array<std::uint8_t, lzw::kMaxCodes> first_;
  std::array<std::uint8_t, lzw::kMaxCodes> last_;
  std::array<std::uint16_t, lzw::kMaxCodes> length_;

  // A string is shorter than there are codes: each is one byte longer than another.
  std::array<std::uint8_t, 2 * lzw::kMaxCodes> output_;
  std::size_t outputSize_ = 0;
};

}  // namespace zantrel

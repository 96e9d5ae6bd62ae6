#pragma once
// The head of a dynamic block: the code lengths of its two codes, themselves in a code
// (RFC 1951, section 3.2.7). May be read in pieces.

#include <array>
#include <cstddef>
#include <cstdint>

#include "compress/inflate_error.h"
#include "compress/inflate_tables.h"

namespace zantrel::inflate {

struct BitReader;

class DynamicHead {
 public:
  void start() noexcept { part_ = Part::counts; }

  enum class Result { done, needInput, failed };
  /// Once done, the literal and distance tables are ready. `error` is set on failure.
  Result read(BitReader& in, Tables& tables, InflateError& error) noexcept;

 private:
  enum class Part { counts, codeLengthCode, codeLengths };

  Result readCodeLengths(BitReader& in, InflateError& error) noexcept;
  InflateError build(Tables& tables) const noexcept;

  Part part_ = Part::counts;
  std::size_t literals_ = 0;
  std::size_t distances_ = 0;
  std::size_t codeLengths_ = 0;
  std::size_t read_ = 0;
  std::array<std::uint8_t, kCodeLengthSymbols> codeLengthLengths_{};
  std::array<std::uint8_t, kLiteralSymbols + kDistanceSymbols> lengths_{};
  CodeLengthTable codeLengthTable_{};
};

}  // namespace zantrel::inflate

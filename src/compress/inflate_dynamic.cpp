#include "compress/inflate_dynamic.h"

#include <algorithm>
#include <span>

#include "compress/inflate_bits.h"

namespace zantrel::inflate {

namespace {

constexpr std::size_t kMaxLiterals = 286;
constexpr std::size_t kMaxDistances = 30;
constexpr std::size_t kEndOfBlockSymbol = 256;

// The order in which the lengths of the code length code stand.
constexpr std::uint8_t kOrder[kCodeLengthSymbols] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};

constexpr unsigned kRepeatLast = 16;
constexpr unsigned kManyZeros = 18;

DynamicHead::Result failed(InflateError& error, InflateError why) {
  error = why;
  return DynamicHead::Result::failed;
}

}  // namespace

DynamicHead::Result DynamicHead::read(BitReader& in, Tables& tables, InflateError& error) noexcept {
  if (part_ == Part::counts) {
    if (!in.need(14)) return Result::needInput;
    literals_ = 257 + static_cast<std::size_t>(lowBits(in.bits, 5));
    distances_ = 1 + static_cast<std::size_t>(lowBits(in.bits >> 5, 5));
    codeLengths_ = 4 + static_cast<std::size_t>(lowBits(in.bits >> 10, 4));
    in.take(14);
    if (literals_ > kMaxLiterals || distances_ > kMaxDistances)
      return failed(error, InflateError::tooManyCodes);
    codeLengthLengths_.fill(0);
    read_ = 0;
    part_ = Part::codeLengthCode;
  }
  if (part_ == Part::codeLengthCode) {
    for (; read_ < codeLengths_; ++read_) {
      if (!in.need(3)) return Result::needInput;
      codeLengthLengths_[kOrder[read_]] = static_cast<std::uint8_t>(lowBits(in.bits, 3));
      in.take(3);
    }
    if (!buildCodeLengthTable(codeLengthLengths_, codeLengthTable_))
      return failed(error, InflateError::codeLengthCode);
    read_ = 0;
    part_ = Part::codeLengths;
  }
  const Result result = readCodeLengths(in, error);
  if (result != Result::done) return result;
  error = build(tables);
  return error == InflateError::none ? Result::done : Result::failed;
}

DynamicHead::Result DynamicHead::readCodeLengths(BitReader& in, InflateError& error) noexcept {
  constexpr unsigned kLongest = kCodeLengthBits + 7;
  const std::size_t wanted = literals_ + distances_;
  while (read_ < wanted) {
    if (in.count < kLongest) in.fill();
    const Entry entry =
        codeLengthTable_[static_cast<std::size_t>(lowBits(in.bits, kCodeLengthBits))];
    if (bitsOf(entry) > in.count) return Result::needInput;
    const unsigned symbol = distanceOf(entry);
    const std::size_t extra = extraOf(in.bits, entry);
    in.take(bitsOf(entry));
    if (symbol < kRepeatLast) {
      lengths_[read_++] = static_cast<std::uint8_t>(symbol);
      continue;
    }
    if (symbol == kRepeatLast && read_ == 0) return failed(error, InflateError::codeLengths);
    const std::uint8_t value = symbol == kRepeatLast ? lengths_[read_ - 1] : std::uint8_t{0};
    const std::size_t repeat = (symbol == kManyZeros ? 11 : 3) + extra;
    if (repeat > wanted - read_) return failed(error, InflateError::codeLengths);
    std::fill_n(&lengths_[read_], repeat, value);
    read_ += repeat;
  }
  return Result::done;
}

InflateError DynamicHead::build(Tables& tables) const noexcept {
  if (lengths_[kEndOfBlockSymbol] == 0) return InflateError::noEndOfBlock;
  const std::span<const std::uint8_t> all(lengths_);
  if (!buildLiteralTable(all.first(literals_), tables)) return InflateError::literalCode;
  if (!buildDistanceTable(all.subspan(literals_, distances_), tables))
    return InflateError::distanceCode;
  return InflateError::none;
}

}  // namespace zantrel::inflate

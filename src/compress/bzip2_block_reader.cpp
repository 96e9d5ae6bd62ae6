// A block: a bit that is set if its bytes were disturbed, the row of the original text, the set of
// bytes that occur, the tables and which of them each group of symbols takes, the symbols.
//
// Input may end anywhere. At least ten bytes follow every block, so that asking for the longest
// code ahead of each symbol never waits for bytes that do not come. Only a run of the front byte
// writes more than one byte for a symbol, and none beyond the block's capacity: time is linear in
// the input and that.

#include "compress/bzip2_block_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "compress/bzip2_randomise.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr unsigned kRange = 16;  // byte values a range

}  // namespace

Bzip2BlockReader::Bzip2BlockReader()
    : block_(std::make_unique_for_overwrite<std::uint8_t[]>(kMaxBlock)) {}

void Bzip2BlockReader::begin(std::size_t capacity) noexcept {
  capacity_ = capacity;
  size_ = 0;
  step_ = Step::header;
}

Bzip2BlockReader::Status Bzip2BlockReader::fail(const char* fault) noexcept {
  fault_ = fault;
  return Status::failed;
}

Bzip2BlockReader::Status Bzip2BlockReader::next(Step step) noexcept {
  step_ = step;
  index_ = 0;
  return Status::done;
}

Bzip2BlockReader::Status Bzip2BlockReader::read(Bzip2BitInput& in) {
  while (step_ != Step::complete) {
    const Status status = advance(in);
    if (status != Status::done) return status;
  }
  return Status::done;
}

Bzip2BlockReader::Status Bzip2BlockReader::advance(Bzip2BitInput& in) {
  switch (step_) {
    case Step::header:
      return readHeader(in);
    case Step::byteRanges:
      return readByteRanges(in);
    case Step::bytes:
      return readBytes(in);
    case Step::counts:
      return readCounts(in);
    case Step::selectors:
      return readSelectors(in);
    case Step::codeLengths:
      return readCodeLengths(in);
    case Step::symbols:
      return readSymbols(in);
    case Step::complete:
      break;
  }
  return Status::done;
}

Bzip2BlockReader::Status Bzip2BlockReader::readHeader(Bzip2BitInput& in) noexcept {
  if (!in.ensure(25)) return Status::needsInput;
  randomised_ = in.take(1) != 0;
  origin_ = static_cast<std::size_t>(in.take(24));
  return next(Step::byteRanges);
}

Bzip2BlockReader::Status Bzip2BlockReader::readByteRanges(Bzip2BitInput& in) noexcept {
  if (!in.ensure(kRange)) return Status::needsInput;
  ranges_ = static_cast<unsigned>(in.take(kRange));
  list_.clear();
  alphabetSize_ = 2;  // the second run symbol and the end, besides one for each byte
  return next(Step::bytes);
}

Bzip2BlockReader::Status Bzip2BlockReader::readBytes(Bzip2BitInput& in) noexcept {
  for (; index_ < 256 / kRange; ++index_) {
    if ((ranges_ << index_ & 0x8000) == 0) continue;
    if (!in.ensure(kRange)) return Status::needsInput;
    const auto bits = static_cast<unsigned>(in.take(kRange));
    for (unsigned i = 0; i < kRange; ++i) {
      if ((bits << i & 0x8000) == 0) continue;
      list_.append(static_cast<std::uint8_t>(index_ * kRange + i));
      ++alphabetSize_;
    }
  }
  if (alphabetSize_ == 2) return fail("no byte occurs");
  return next(Step::counts);
}

Bzip2BlockReader::Status Bzip2BlockReader::readCounts(Bzip2BitInput& in) noexcept {
  if (!in.ensure(18)) return Status::needsInput;
  tableCount_ = static_cast<unsigned>(in.take(3));
  selectorCount_ = static_cast<unsigned>(in.take(15));
  if (tableCount_ < kMinTables || tableCount_ > kMaxTables) return fail("number of tables");
  if (selectorCount_ == 0) return fail("no selectors");
  tableOrder_.clear();
  for (unsigned i = 0; i < tableCount_; ++i) tableOrder_.append(static_cast<std::uint8_t>(i));
  return next(Step::selectors);
}

// Some encoders write more selectors than a block can need; the others are read past.
Bzip2BlockReader::Status Bzip2BlockReader::readSelectors(Bzip2BitInput& in) noexcept {
  for (; index_ < selectorCount_; ++index_) {
    if (!in.ensure(kMaxTables)) return Status::needsInput;
    const auto ones =
        static_cast<unsigned>(std::countl_one(in.peek(kMaxTables) << (64 - kMaxTables)));
    if (ones >= tableCount_) return fail("selector of no table");
    in.drop(ones + 1);
    const std::uint8_t table = tableOrder_.take(ones);
    if (index_ < kMaxSelectors) selectors_[index_] = table;
  }
  selectorCount_ = std::min(selectorCount_, static_cast<unsigned>(kMaxSelectors));
  table_ = 0;
  codeLength_ = 0;
  return next(Step::codeLengths);
}

Bzip2BlockReader::Status Bzip2BlockReader::readCodeLengths(Bzip2BitInput& in) noexcept {
  for (; table_ < tableCount_; ++table_, index_ = 0, codeLength_ = 0) {
    if (codeLength_ == 0) {
      if (!in.ensure(5)) return Status::needsInput;
      codeLength_ = static_cast<unsigned>(in.take(5));
      if (codeLength_ == 0) return fail("code length");
    }
    while (index_ < alphabetSize_) {
      if (codeLength_ < 1 || codeLength_ > kMaxCodeLength) return fail("code length");
      if (!in.ensure(2)) return Status::needsInput;
      if (in.peek(1) == 0) {
        in.drop(1);
        codeLengths_[index_++] = static_cast<std::uint8_t>(codeLength_);
      } else if (in.take(2) == 2) {
        ++codeLength_;
      } else if (--codeLength_ == 0) {
        return fail("code length");
      }
    }
    tables_[table_].build({codeLengths_.data(), alphabetSize_});
  }
  groupLeft_ = 0;
  run_ = 0;
  runDigit_ = 1;
  return next(Step::symbols);
}

Bzip2BlockReader::Status Bzip2BlockReader::readSymbols(Bzip2BitInput& in) noexcept {
  const unsigned endOfBlock = alphabetSize_ - 1;
  for (;;) {
    if (groupLeft_ == 0) {
      if (index_ == selectorCount_) return fail("more symbols than selectors");
      table_ = selectors_[index_++];
      groupLeft_ = kGroup;
    }
    const Bzip2DecodeTable& table = tables_[table_];
    Bzip2BitInput bits = in;
    while (groupLeft_ > 0) {
      if (!bits.ensure(kMaxCodeLength)) {
        in = bits;
        return Status::needsInput;
      }
      const unsigned symbol = table.take(bits);
      --groupLeft_;
      if (symbol <= kRunB) {
        // Digits beyond the capacity add nothing: the run is too long already.
        if (runDigit_ <= kMaxBlock) run_ += runDigit_ << symbol;
        runDigit_ <<= runDigit_ <= kMaxBlock;
        continue;
      }
      if (run_ > 0 && !addRun()) return fail("more bytes than a block may have");
      if (symbol >= endOfBlock) {
        in = bits;
        return symbol == endOfBlock ? complete() : fail("code of no symbol");
      }
      if (size_ == capacity_) return fail("more bytes than a block may have");
      block_[size_++] = list_.take(symbol - 1);
    }
    in = bits;
  }
}

bool Bzip2BlockReader::addRun() noexcept {
  if (run_ > capacity_ - size_) return false;
  std::memset(block_.get() + size_, list_.front(), run_);
  size_ += run_;
  run_ = 0;
  runDigit_ = 1;
  return true;
}

Bzip2BlockReader::Status Bzip2BlockReader::complete() {
  if (origin_ >= size_) return fail("row of the text");
  inverse_.run(block_.get(), size_, origin_);
  if (randomised_) bzip2Randomise(block_.get(), size_);
  return next(Step::complete);
}

}  // namespace zantrel

#include "compress/lzw_decoder.h"

#include <algorithm>

#include "core/log_base.h"

namespace zantrel {

namespace {

using namespace lzw;

}  // namespace

LzwDecoder::Status LzwDecoder::advance(LogBase& log) {
  outputSize_ = 0;
  for (; headerSize_ < kHeaderBytes; in_ = in_.subspan(1)) {
    if (in_.empty()) return Status::needsInput;
    header_[headerSize_++] = in_.front();
    if (headerSize_ == kHeaderBytes && !readHeader(log)) return Status::failed;
  }
  for (;;) {
    if (pending_ == kNone && !takeCode(pending_)) break;
    if (blockMode_ && pending_ == kClear) {
      skipGroup();
      clearTable();
    } else if (!isDefined(pending_)) {
      if (outputSize_ > 0) return Status::hasOutput;  // and fails the next time
      log.logError("The LZW data hold a code that is not defined.");
      return Status::failed;
    } else {
      if (output_.size() - outputSize_ < kMaxCodes) return Status::hasOutput;
      if (previous_ != kNone) define(pending_ < next_ ? pending_ : previous_);
      writeString(pending_);
      previous_ = pending_;
    }
    pending_ = kNone;
  }
  return outputSize_ > 0 ? Status::hasOutput : Status::needsInput;
}

bool LzwDecoder::readHeader(LogBase& log) {
  if (!std::equal(std::begin(kSignature), std::end(kSignature), header_.begin())) {
    log.logError("The data do not begin with a .Z header.");
    return false;
  }
  const unsigned flags = header_.back();
  maxBits_ = flags & kMaxBitsMask;
  blockMode_ = (flags & kBlockMode) != 0;
  if (maxBits_ < kMinBits || maxBits_ > kMaxBits) {
    log.logError("The .Z header asks for codes of a width that is not supported.");
    log.logDataLong("maxBits", static_cast<std::int32_t>(maxBits_));
    return false;
  }
  if ((flags & kReservedMask) != 0) log.logInfo("Reserved bits of the .Z header were ignored.");
  for (unsigned i = 0; i < kLiterals; ++i) {
    first_[i] = last_[i] = static_cast<std::uint8_t>(i);
    length_[i] = 1;
  }
  clearTable();
  return true;
}

// False while the input ends inside a code. What a short group was filled up with may be missing at
// the end of the data.
bool LzwDecoder::takeCode(unsigned& code) noexcept {
  if (next_ > widest_) {
    skipGroup();
    ++width_;
    widest_ = width_ == maxBits_ ? 1U << maxBits_ : (1U << width_) - 1;
  }
  for (;;) {
    for (; bitCount_ <= 56 && !in_.empty(); bitCount_ += 8, in_ = in_.subspan(1))
      bits_ |= std::uint64_t{in_.front()} << bitCount_;
    const unsigned skipped = std::min(toSkip_, bitCount_);
    const unsigned taken = toSkip_ > 0 ? skipped : bitCount_ < width_ ? 0 : width_;
    if (taken == 0) return false;
    const std::uint64_t bits = bits_;
    bits_ = taken < 64 ? bits_ >> taken : 0;
    bitCount_ -= taken;
    if (toSkip_ == 0) {
      code = static_cast<unsigned>(bits & ((1U << width_) - 1));
      inGroup_ = (inGroup_ + 1) % kGroup;
      return true;
    }
    toSkip_ -= taken;
  }
}

void LzwDecoder::skipGroup() noexcept {
  toSkip_ = (kGroup - inGroup_) % kGroup * width_;
  inGroup_ = 0;
}

// Even where the header says 9, codes get 10 bits wide when all of 9 bits are defined: compress has
// always done so, and gzip with it.
void LzwDecoder::clearTable() noexcept {
  width_ = kMinBits;
  widest_ = (1U << kMinBits) - 1;
  next_ = blockMode_ ? kClear + 1 : kLiterals;
  previous_ = kNone;
}

// A code may be the very one that it defines: the string before, and that one's first byte again.
bool LzwDecoder::isDefined(unsigned code) const noexcept {
  if (code < kLiterals) return true;
  if (previous_ == kNone || code > next_) return false;
  return code < next_ || next_ < 1U << maxBits_;
}

// The next code is the string before and the first byte of the one that follows it.
void LzwDecoder::define(unsigned follower) noexcept {
  if (next_ == 1U << maxBits_) return;
  prefix_[next_] = static_cast<std::uint16_t>(previous_);
  first_[next_] = first_[previous_];
  last_[next_] = first_[follower];
  length_[next_] = static_cast<std::uint16_t>(length_[previous_] + 1);
  ++next_;
}

void LzwDecoder::writeString(unsigned code) noexcept {
  outputSize_ += length_[code];
  std::uint8_t* end = output_.data() + outputSize_;
  for (; code >= kLiterals; code = prefix_[code]) *--end = last_[code];
  *--end = static_cast<std::uint8_t>(code);
}

bool LzwDecoder::finish(LogBase& log) const {
  if (headerSize_ == kHeaderBytes) return true;
  log.logError("The .Z data ended prematurely.");
  return false;
}

}  // namespace zantrel

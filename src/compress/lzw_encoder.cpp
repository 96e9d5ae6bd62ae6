#include "compress/lzw_encoder.h"

#include <algorithm>
#include <iterator>

#include "compress/lzw_format.h"

namespace zantrel {

namespace {

using namespace lzw;

constexpr unsigned kNone = 0xFFFF'FFFF;
// Twice as many places as codes keep the ways of the search short.
constexpr unsigned kTableBits = kMaxBits + 1;
constexpr std::uint32_t kFree = 0xFFFF'FFFF;
constexpr std::uint64_t kCheckGap = 10'000;  // bytes between two looks at the ratio

}  // namespace

LzwEncoder::LzwEncoder()
    : table_(std::make_unique_for_overwrite<Entry[]>(std::size_t{1} << kTableBits)),
      current_(kNone) {
  out_.assign(std::begin(kSignature), std::end(kSignature));
  out_.push_back(kBlockMode | kMaxBits);
  clearTable();
}

void LzwEncoder::clearTable() noexcept {
  std::fill_n(table_.get(), std::size_t{1} << kTableBits, Entry{kFree, 0});
  next_ = kClear + 1;
  width_ = kMinBits;
  inBytes_ = outBits_ = bestRatio_ = 0;
  checkAt_ = kCheckGap;
}

// The place of a string, or the free one where it belongs.
LzwEncoder::Entry& LzwEncoder::find(std::uint32_t string) noexcept {
  std::size_t place = string * 0x9E37'79B1U >> (32 - kTableBits);
  while (table_[place].string != string && table_[place].string != kFree)
    place = (place + 1) % (std::size_t{1} << kTableBits);
  return table_[place];
}

void LzwEncoder::add(ByteSpan in) {
  for (const std::uint8_t byte : in) {
    ++inBytes_;
    if (current_ == kNone) {
      current_ = byte;
      continue;
    }
    const std::uint32_t string = current_ << 8 | byte;
    Entry& entry = find(string);
    if (entry.string == string) {
      current_ = entry.code;
      continue;
    }
    putCode(current_);
    current_ = byte;
    if (next_ < kMaxCodes)
      entry = {string, next_++};
    else if (inBytes_ >= checkAt_)
      clearIfWorse();
  }
}

// Looks at all since the table was cleared, so that a short stretch of other text costs no new
// start.
void LzwEncoder::clearIfWorse() {
  checkAt_ = inBytes_ + kCheckGap;
  const std::uint64_t ratio = (inBytes_ << 16) / outBits_;
  if (ratio >= bestRatio_) {
    bestRatio_ = ratio;
    return;
  }
  putCode(kClear);
  fillGroup();
  clearTable();
}

void LzwEncoder::putCode(unsigned code) {
  bits_ |= std::uint64_t{code} << bitCount_;
  bitCount_ += width_;
  outBits_ += width_;
  inGroup_ = (inGroup_ + 1) % kGroup;
  for (; bitCount_ >= 8; bitCount_ -= 8, bits_ >>= 8)
    out_.push_back(static_cast<std::uint8_t>(bits_));
  if (next_ < 1U << width_ || width_ == kMaxBits) return;
  fillGroup();
  ++width_;
}

void LzwEncoder::fillGroup() {
  for (; inGroup_ != 0; inGroup_ = (inGroup_ + 1) % kGroup) bitCount_ += width_;
  for (; bitCount_ > 0; bitCount_ -= std::min(bitCount_, 8U), bits_ >>= 8)
    out_.push_back(static_cast<std::uint8_t>(bits_));
}

void LzwEncoder::finish() {
  if (current_ != kNone) putCode(current_);
  current_ = kNone;
  if (bitCount_ > 0) out_.push_back(static_cast<std::uint8_t>(bits_));
  bitCount_ = 0;
}

}  // namespace zantrel

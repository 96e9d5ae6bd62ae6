#include "compress/bzip2_run_length.h"

#include <algorithm>
#include <cstring>

#include "compress/bzip2_format.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr std::size_t kMaxRun = kRunThreshold + 255;

// The end of the first four equal bytes in a row, or 0. Two neighbours that differ rule out three
// starting points at once, so that most bytes are never looked at.
std::size_t endOfFour(ByteSpan bytes) noexcept {
  std::size_t start = 0;  // no run begins in front of it
  while (bytes.size() - start >= kRunThreshold) {
    const std::size_t last = start + kRunThreshold - 1;
    if (bytes[last] != bytes[last - 1]) {
      start = last;
      continue;
    }
    std::size_t first = last - 1;
    while (first > start && bytes[first - 1] == bytes[last]) --first;
    std::size_t end = last + 1;
    const std::size_t wanted = std::min(first + kRunThreshold, bytes.size());
    while (end < wanted && bytes[end] == bytes[last]) ++end;
    if (end - first == kRunThreshold) return end;
    start = end;
  }
  return 0;
}

}  // namespace

Bzip2RunEncoder::Bzip2RunEncoder()
    : bytes_(std::make_unique_for_overwrite<std::uint8_t[]>(kMaxBlock)) {}

// The last byte is kept for the count of a run that the end of the block cuts off.
bool Bzip2RunEncoder::isFull() const noexcept {
  return size_ + 1 >= kMaxBlock && runLength_ < kRunThreshold;
}

void Bzip2RunEncoder::add(ByteSpan& in) noexcept {
  while (!in.empty() && !isFull()) {
    if (runLength_ > 0 && in.front() == runByte_)
      addToRun(in);
    else {
      if (runLength_ >= kRunThreshold) finish();
      if (!isFull()) addLiterals(in);
    }
  }
}

void Bzip2RunEncoder::finish() noexcept {
  if (runLength_ >= kRunThreshold)
    bytes_[size_++] = static_cast<std::uint8_t>(runLength_ - kRunThreshold);
  runLength_ = 0;
}

void Bzip2RunEncoder::append(ByteSpan bytes) noexcept {
  std::memcpy(bytes_.get() + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
}

void Bzip2RunEncoder::addToRun(ByteSpan& in) noexcept {
  while (!in.empty() && in.front() == runByte_ && !isFull()) {
    if (runLength_ == kMaxRun) return finish();
    if (runLength_ < kRunThreshold) append(in.first(1));
    ++runLength_;
    in = in.subspan(1);
  }
}

void Bzip2RunEncoder::addLiterals(ByteSpan& in) noexcept {
  const ByteSpan part = in.first(std::min(in.size(), kMaxBlock - 1 - size_));
  const std::size_t end = endOfFour(part);
  const ByteSpan literals = end > 0 ? part.first(end) : part;
  append(literals);
  in = in.subspan(literals.size());
  runByte_ = literals.back();
  runLength_ = 1;
  while (runLength_ < literals.size() && runLength_ < kRunThreshold &&
         literals[literals.size() - 1 - runLength_] == runByte_)
    ++runLength_;
}

void Bzip2RunDecoder::begin(ByteSpan block) noexcept {
  *this = {};
  block_ = block;
}

std::size_t Bzip2RunDecoder::decode(std::uint8_t* out, std::size_t room) noexcept {
  const std::size_t all = room;
  while (room > 0) {
    if (repeats_ > 0) {
      const std::size_t count = std::min(repeats_, room);
      std::memset(out, block_[literalEnd_ - 1], count);
      repeats_ -= count;
      out += count;
      room -= count;
    } else if (at_ < literalEnd_) {
      const std::size_t count = std::min(literalEnd_ - at_, room);
      std::memcpy(out, block_.data() + at_, count);
      at_ += count;
      out += count;
      room -= count;
    } else if (at_ == block_.size()) {
      break;
    } else if (runFollows_) {
      repeats_ = block_[at_++];
      runFollows_ = false;
    } else {
      const std::size_t end = endOfFour(block_.subspan(at_));
      runFollows_ = end > 0;
      literalEnd_ = end > 0 ? at_ + end : block_.size();
    }
  }
  return all - room;
}

}  // namespace zantrel

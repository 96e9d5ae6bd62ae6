#include "compress/zee_deflate_state.h"

#include <algorithm>
#include <cstring>

#include "compress/deflate_block_split.h"

namespace zantrel {

using zee::Block;
using zee::Parser;

namespace {

// Splitting is thought about every so many bytes, if they became so many symbols at least.
constexpr std::size_t kSplitBytes = 8192;
constexpr std::size_t kSplitBytesAtLevel1 = 32768;
constexpr std::uint32_t kSplitSymbols = 2048;

/// Whether so much of a piece was found nowhere before that the next one may be noise.
bool mostlyLiterals(const zee::Sequence* sequences, std::size_t count, std::size_t size) noexcept {
  constexpr std::size_t kFewMatches = 64;
  if (count > kFewMatches) return false;
  std::size_t literals = 0;
  for (std::size_t i = 0; i < count; ++i) literals += sequences[i].literals;
  return literals > size - size / 8;
}

std::uint32_t symbolCount(const zee::Frequencies& counts) noexcept {
  std::uint32_t sum = 0;
  for (const std::uint32_t n : counts.literal) sum += n;
  return sum;
}

}  // namespace

ZeeDeflateState::ZeeDeflateState() noexcept {
  std::memset(window_.data(), 0, kHistory);
}

void ZeeDeflateState::start(int level) noexcept {
  level_ = std::clamp(level, 0, 9);
  started_ = finished_ = false;
  noise_.reset();
  out_ = {};
  blockStart_ = recentStart_ = next_ = end_ = 0;
  position_ = 0;
  stored_ = false;
  expectNoise_ = true;
  clearBlock();
  taken_ = written_ = 0;
}

std::size_t ZeeDeflateState::fill(ByteSpan input) noexcept {
  const std::size_t size = std::min(input.size(), kCapacity - end_);
  if (size > 0) std::memcpy(window() + end_, input.data(), size);
  end_ += size;
  return size;
}

std::size_t ZeeDeflateState::drain(std::span<std::uint8_t> output) noexcept {
  const std::size_t size = std::min(output.size(), written_ - taken_);
  if (size > 0) std::memcpy(output.data(), pending_.data() + taken_, size);
  taken_ += size;
  return size;
}

bool ZeeDeflateState::run(bool finish) noexcept {
  if (finished_ || (!finish && end_ < kCapacity)) return true;
  if (!started_ && !startParser(finish)) return false;
  std::memset(window() + end_, 0, Parser::kReadAhead);
  taken_ = written_ = 0;
  out_.attach(pending_.data());
  while (written_ == 0) {
    const std::size_t left = end_ - next_;
    if (finish && left == 0) {
      settle();
      if (written_ == 0) writeAll(true);
    } else if (!finish && left < kPiece + Parser::kOverrun) {
      slide();
      break;
    } else {
      addPiece();
    }
  }
  return true;
}

// Only now is it known whether the whole stream is short.
bool ZeeDeflateState::startParser(bool finish) noexcept {
  if (level_ > 0) {
    if (!parser_ || parserLevel_ != level_) parser_ = zee::makeParser(level_);
    if (!parser_) return false;
    parserLevel_ = level_;
    parser_->start(finish ? end_ : kCapacity);
  }
  started_ = true;
  return true;
}

void ZeeDeflateState::addPiece() noexcept {
  const std::size_t size = std::min(kPiece, end_ - next_);
  const std::uint8_t* const piece = window() + next_;
  const bool noise =
      level_ == 0 || (size == kPiece && expectNoise_ &&
                      noise_.isNoise(piece, position_ + static_cast<std::uint32_t>(next_),
                                     std::min(next_, kHistory)));
  if (noise != stored_) {
    if (next_ > blockStart_) writeAll(false);
    stored_ = noise;
  }
  return noise ? addNoise(size) : addTokens(size);
}

void ZeeDeflateState::addNoise(std::size_t size) noexcept {
  next_ += size;
  if (next_ - blockStart_ + kPiece > zee::kMaxStored) writeAll(false);
}

void ZeeDeflateState::addTokens(std::size_t size) noexcept {
  const std::size_t before = block_.count();
  next_ = parser_->parse({window(), position_, end_}, next_, next_ + size, block_, recent_);
  expectNoise_ = mostlyLiterals(block_.sequences() + before, block_.count() - before, size);

  const std::size_t splitBytes = level_ == 1 ? kSplitBytesAtLevel1 : kSplitBytes;
  if (next_ - recentStart_ >= splitBytes && symbolCount(recent_) >= kSplitSymbols) settle();
  const bool full = next_ - blockStart_ + kPiece + Parser::kOverrun > kMaxBlock ||
                    block_.room() < Parser::kMaxSequences;
  if (full && written_ == 0) writeAll(false);
}

// The recent part joins the block, or becomes the start of another.
void ZeeDeflateState::settle() noexcept {
  if (stored_) return;
  if (settledSequences_ > 0 && zee::worthSplitting(settled_, recent_)) {
    writeSettled();
    return;
  }
  settled_.add(recent_);
  recent_ = {};
  settledSequences_ = block_.count();
  recentStart_ = next_;
}

void ZeeDeflateState::writeSettled() noexcept {
  zee::writeBlock(out_, window() + blockStart_, recentStart_ - blockStart_, block_.sequences(),
                  settledSequences_, settled_, false);
  written_ = static_cast<std::size_t>(out_.position() - pending_.data());
  block_.removeFront(settledSequences_);
  blockStart_ = recentStart_;
  recentStart_ = next_;
  settled_ = recent_;
  recent_ = {};
  settledSequences_ = block_.count();
}

void ZeeDeflateState::writeAll(bool last) noexcept {
  const std::uint8_t* const bytes = window() + blockStart_;
  const std::size_t size = next_ - blockStart_;
  settled_.add(recent_);
  if (stored_)
    zee::writeStored(out_, bytes, size, last);
  else
    zee::writeBlock(out_, bytes, size, block_.sequences(), block_.count(), settled_, last);
  written_ = static_cast<std::size_t>(out_.position() - pending_.data());
  finished_ = last;
  blockStart_ = recentStart_ = next_;
  clearBlock();
}

void ZeeDeflateState::clearBlock() noexcept {
  block_.clear();
  settled_ = {};
  recent_ = {};
  settledSequences_ = 0;
}

void ZeeDeflateState::slide() noexcept {
  const std::size_t history = next_ > kHistory ? next_ - kHistory : 0;
  const std::size_t from = std::min(blockStart_, history);
  std::memmove(window(), window() + from, end_ - from);
  blockStart_ -= from;
  recentStart_ -= from;
  next_ -= from;
  end_ -= from;
  position_ += static_cast<std::uint32_t>(from);
}

}  // namespace zantrel

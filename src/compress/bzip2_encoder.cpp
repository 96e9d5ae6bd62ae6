#include "compress/bzip2_encoder.h"

#include "compress/bzip2_format.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr std::uint64_t kHeader = 0x425A6839;  // "BZh9"
constexpr unsigned kMarkBits = 48;
constexpr unsigned kCrcBits = 32;

}  // namespace

Bzip2Encoder::Bzip2Encoder() {
  out_.reserve(32);
  out_.put(kHeader, 32);
}

void Bzip2Encoder::add(ByteSpan& in) {
  const ByteSpan before = in;
  runs_.add(in);
  blockCrc_.update(before.first(before.size() - in.size()));
  if (runs_.isFull()) writeBlock();
}

void Bzip2Encoder::writeBlock() {
  runs_.finish();
  const std::uint32_t crc = blockCrc_.value();
  out_.reserve(kMarkBits + kCrcBits);
  out_.put(kBlockMark, kMarkBits);
  out_.put(crc, kCrcBits);
  writer_.write(runs_.block(), out_);
  streamCrc_ = bzip2CombinedCrc(streamCrc_, crc);
  runs_.clear();
  blockCrc_ = {};
}

void Bzip2Encoder::finish() {
  if (!runs_.empty()) writeBlock();
  out_.reserve(kMarkBits + kCrcBits + 8);
  out_.put(kEndMark, kMarkBits);
  out_.put(streamCrc_, kCrcBits);
  out_.alignToByte();
}

}  // namespace zantrel

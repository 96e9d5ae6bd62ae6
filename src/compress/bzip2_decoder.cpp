#include "compress/bzip2_decoder.h"

#include "compress/bzip2_format.h"
#include "core/log_base.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr std::size_t kPiece = 65536;  // of output

constexpr unsigned kMarkBits = 48;
constexpr unsigned kCrcBits = 32;
constexpr char kSignature[] = "BZh";  // one digit follows
constexpr unsigned kHeaderBytes = 4;

// Whether a byte may stand there in the header of a stream.
bool fitsHeader(unsigned index, std::uint64_t byte) noexcept {
  if (index + 1 < kHeaderBytes) return byte == static_cast<unsigned char>(kSignature[index]);
  return byte >= '1' && byte <= '9';
}

bool crcMatches(std::uint32_t stored, std::uint32_t computed, const char* sentence, LogBase& log) {
  if (stored == computed) return true;
  log.logError(sentence);
  log.logHex("storedCrc", stored);
  log.logHex("computedCrc", computed);
  return false;
}

}  // namespace

Bzip2Decoder::Bzip2Decoder() : output_(std::make_unique_for_overwrite<std::uint8_t[]>(kPiece)) {}

Bzip2Decoder::Status Bzip2Decoder::advance(LogBase& log) {
  outputSize_ = 0;
  for (;;) {
    const Result result = step(log);
    if (result == Result::needsInput) return Status::needsInput;
    if (result == Result::failed) return Status::failed;
    if (outputSize_ > 0) return Status::hasOutput;
  }
}

Bzip2Decoder::Result Bzip2Decoder::step(LogBase& log) {
  switch (step_) {
    case Step::streamHeader:
      return readStreamHeader(log);
    case Step::mark:
      return readMark(log);
    case Step::blockCrc:
      return readBlockCrc();
    case Step::block:
      return readBlock(log);
    case Step::output:
      return writeOutput(log);
    case Step::streamCrc:
      return readStreamCrc(log);
    case Step::trailer:
      break;
  }
  in_.clear();
  return Result::needsInput;
}

Bzip2Decoder::Result Bzip2Decoder::readStreamHeader(LogBase& log) {
  const bool whole = in_.ensure(8 * kHeaderBytes);
  const unsigned held = whole ? kHeaderBytes : in_.bitsHeld() / 8;
  for (unsigned i = 0; i < held; ++i) {
    if (fitsHeader(i, in_.peek(8 * (i + 1)) & 255)) continue;
    if (anyStream_) return ignoreTrailer(log);
    log.logError("The data do not begin with a bzip2 header.");
    return Result::failed;
  }
  if (!whole) return Result::needsInput;
  blockCapacity_ = (in_.take(8 * kHeaderBytes) & 15) * kBlockUnit;
  streamCrc_ = 0;
  step_ = Step::mark;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::ignoreTrailer(LogBase& log) {
  log.logInfo("Bytes after the end of the bzip2 data were ignored.");
  step_ = Step::trailer;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::readMark(LogBase& log) {
  if (!in_.ensure(kMarkBits)) return Result::needsInput;
  const std::uint64_t mark = in_.take(kMarkBits);
  if (mark != kBlockMark && mark != kEndMark) {
    log.logError("Neither a bzip2 block nor the end of the stream stands where one must.");
    return Result::failed;
  }
  step_ = mark == kBlockMark ? Step::blockCrc : Step::streamCrc;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::readBlockCrc() {
  if (!in_.ensure(kCrcBits)) return Result::needsInput;
  storedCrc_ = static_cast<std::uint32_t>(in_.take(kCrcBits));
  reader_.begin(blockCapacity_);
  step_ = Step::block;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::readBlock(LogBase& log) {
  const Result result = reader_.read(in_);
  if (result == Result::failed) {
    log.logError("A bzip2 block is malformed.");
    log.logData("fault", reader_.fault());
  }
  if (result != Result::done) return result;
  runs_.begin(reader_.block());
  blockCrc_ = {};
  step_ = Step::output;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::writeOutput(LogBase& log) {
  outputSize_ = runs_.decode(output_.get(), kPiece);
  blockCrc_.update(output());
  if (!runs_.atEnd()) return Result::done;
  if (runs_.endsInRun()) {
    log.logError("A bzip2 block is malformed.");
    log.logData("fault", "run without its count");
    return Result::failed;
  }
  const std::uint32_t computed = blockCrc_.value();
  if (!crcMatches(storedCrc_, computed, "The checksum of a bzip2 block does not match its data.",
                  log))
    return Result::failed;
  streamCrc_ = bzip2CombinedCrc(streamCrc_, computed);
  step_ = Step::mark;
  return Result::done;
}

Bzip2Decoder::Result Bzip2Decoder::readStreamCrc(LogBase& log) {
  if (!in_.ensure(kCrcBits)) return Result::needsInput;
  const auto stored = static_cast<std::uint32_t>(in_.take(kCrcBits));
  if (!crcMatches(stored, streamCrc_, "The checksum of a bzip2 stream does not match its blocks.",
                  log))
    return Result::failed;
  in_.alignToByte();
  anyStream_ = true;
  step_ = Step::streamHeader;
  return Result::done;
}

bool Bzip2Decoder::finish(LogBase& log) {
  if (anyStream_ &&
      (step_ == Step::trailer || (step_ == Step::streamHeader && in_.bitsHeld() == 0)))
    return true;
  log.logError("The bzip2 data ended prematurely.");
  return false;
}

}  // namespace zantrel

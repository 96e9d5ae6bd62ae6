#include "compress/inflate_state2.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "compress/inflate_bits.h"
#include "compress/inflate_fast.h"
#include "core/log_base.h"

namespace zantrel {

using inflate::BitReader;
using inflate::Entry;
using inflate::Output;

namespace {

// A code that serves for this much output is worth a table of pairs.
constexpr std::size_t kPairsPayBehind = 12288;
constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

// The trace of a stream of many empty blocks would otherwise outgrow the stream itself.
constexpr int kMaxTraceLines = 10000;

struct StateName {
  int state;
  const char* name;
};
constexpr StateName kStateNames[] = {
    {-1, "Need block type"},   {0, "need stored setup"}, {1, "need fixed setup"},
    {2, "need dynamic setup"}, {10, "need stored data"}, {11, "need fixed data"},
    {12, "need dynamic data"},
};

// A symbol that begins `bits`, of which some may be missing: it is known when its code is complete.
struct Symbol {
  Symbol(const Entry* table, unsigned width, std::uint64_t bits) noexcept
      : entry(table[inflate::lowBits(bits, width)]) {
    if (!inflate::isSubtable(entry)) return;
    prefix = width;
    entry = inflate::inSubtable(table, entry, bits >> width);
  }
  unsigned codeBits() const noexcept { return prefix + inflate::codeBitsOf(entry); }
  unsigned bits() const noexcept { return prefix + inflate::bitsOf(entry); }
  unsigned extra(std::uint64_t bits) const noexcept {
    return inflate::extraOf(bits >> prefix, entry);
  }

  Entry entry;
  unsigned prefix = 0;
};

// Room for the output of a whole stream, in steps that grow with what is there.
class WholeOutput {
 public:
  WholeOutput(DataBuffer& buffer, std::uint64_t limit)
      : buffer_(buffer),
        start_(buffer.getSize()),
        limit_(limit == 0 ? std::numeric_limits<std::uint64_t>::max() : limit) {}

  bool atLimit() const { return buffer_.getSize() - start_ >= limit_; }

  // Room for as much again as there is, but for no more than the input can give; for less where
  // that cannot be had.
  bool grow(std::size_t inputLeft) {
    constexpr std::uint64_t kLeast = 32768;
    constexpr std::uint64_t kMostPerByte = 1032;  // a match of 258 bytes in two bits
    constexpr std::uint64_t kGuess = 1U << 22;
    const std::uint64_t produced = buffer_.getSize() - start_;
    const std::uint64_t possible = kLeast + kMostPerByte * inputLeft;
    std::uint64_t wanted = std::max(produced, std::min(4 * std::uint64_t{inputLeft}, kGuess));
    wanted = std::min({std::max(wanted, kLeast), possible, limit_ - produced});
    for (; wanted > 0; wanted /= 2) {
      if (wanted <= std::numeric_limits<std::uint32_t>::max() &&
          buffer_.reserve(static_cast<std::size_t>(wanted)))
        return true;
    }
    return false;
  }

  Output output() const {
    std::uint8_t* const data = buffer_.getData2();
    std::uint8_t* const next = data + buffer_.getSize();
    // Whatever the buffer has beyond what was asked for is as good.
    const std::size_t spare = buffer_.capacity() - buffer_.getSize();
    const std::uint64_t allowed = limit_ - (buffer_.getSize() - start_);
    const std::size_t room = static_cast<std::size_t>(std::min<std::uint64_t>(spare, allowed));
    return {data + start_, next, next + room};
  }

  void commit(const Output& output) {
    buffer_.commit(static_cast<std::size_t>(output.next - output.begin) -
                   (buffer_.getSize() - start_));
  }

 private:
  DataBuffer& buffer_;
  std::uint32_t start_;
  std::uint64_t limit_;
};

}  // namespace

InflateState2::InflateState2() = default;

void InflateState2::reset() noexcept {
  state_ = State::blockType;
  lastBlock_ = finished_ = false;
  error_ = InflateError::none;
  totalProduced_ = 0;
  bits_ = 0;
  bitCount_ = 0;
  storedLeft_ = matchLeft_ = 0;
  window_.clear();
  traceLines_ = 0;
  ranDry_ = false;
}

InflateState2::Status InflateState2::run(ByteSpan& in, std::span<std::uint8_t> out,
                                         std::size_t& produced) {
  Output output{out.data(), out.data(), out.data() + out.size()};
  const Step step = decodePiece(in, output);
  produced = output.size();
  window_.append(out.data(), produced);
  return statusOf(step);
}

InflateState2::Status InflateState2::inflateAll(ByteSpan& in, DataBuffer& out,
                                                std::uint64_t limit) {
  reset();
  WholeOutput whole(out, limit);
  for (;;) {
    Output output = whole.output();
    const Step step = decodePiece(in, output);
    whole.commit(output);
    if (step != Step::needOutput) return statusOf(step);
    if (whole.atLimit()) return statusOf(fail(InflateError::outputLimit));
    if (!whole.grow(in.size())) return statusOf(fail(InflateError::outOfMemory));
  }
}

InflateState2::Status InflateState2::statusOf(Step step) noexcept {
  if (step == Step::failed) return Status::failed;
  return step == Step::finished ? Status::finished : Status::more;
}

InflateState2::Step InflateState2::decodePiece(ByteSpan& in, Output& out) {
  if (error_ != InflateError::none) return Step::failed;
  if (finished_) return Step::finished;
  if (ranDry_ && !in.empty()) {
    trace(bitCount_ == 0 ? "Refilling source buffer..." : "Emergency refill...");
    ranDry_ = false;
  }
  const std::size_t before = out.size();
  BitReader reader{in.data(), in.data(), in.data() + in.size(), bits_, bitCount_};
  const Step step = decode(reader, out);
  // Input that ran short belongs to the symbol that it begins, all other whole bytes go back.
  if (step == Step::needInput) {
    ranDry_ = true;
  } else {
    reader.giveBack();
  }
  bits_ = reader.bits;
  bitCount_ = reader.count;
  in = in.last(reader.left());
  totalProduced_ += out.size() - before;
  return step;
}

InflateState2::Step InflateState2::decode(BitReader& in, Output& out) {
  for (;;) {
    Step step = Step::next;
    switch (state_) {
      case State::blockType:
        step = readBlockType(in);
        break;
      case State::storedSetup:
        step = readStoredHead(in);
        break;
      case State::fixedSetup:
        tables_ = &inflate::fixedTables();
        pairsDue_ = kNever;
        havePairs_ = false;
        enter(State::fixedData);
        break;
      case State::dynamicSetup:
        step = readDynamicHead(in);
        break;
      case State::storedData:
        step = copyStored(in, out);
        break;
      case State::fixedData:
      case State::dynamicData:
        step = decodeBlock(in, out);
        break;
    }
    if (step != Step::next) return step;
  }
}

InflateState2::Step InflateState2::readBlockType(BitReader& in) {
  if (lastBlock_) {
    trace("Finished because state = -1 and lastBlock bit is set.");
    finished_ = true;
    return Step::finished;
  }
  if (!in.need(3)) return Step::needInput;
  lastBlock_ = (in.bits & 1) != 0;
  const unsigned type = static_cast<unsigned>(in.bits >> 1) & 3;
  in.take(3);
  if (type == 3) return fail(InflateError::blockType);
  if (type == 2) head_.start();
  enter(static_cast<State>(type));
  return Step::next;
}

InflateState2::Step InflateState2::readStoredHead(BitReader& in) {
  // What is left of the current byte is skipped.
  const unsigned skipped = in.count % 8;
  if (!in.need(skipped + 32)) return Step::needInput;
  in.take(skipped);
  const std::uint64_t length = in.bits & 0xFFFF;
  const std::uint64_t complement = in.bits >> 16 & 0xFFFF;
  in.take(32);
  in.giveBack();
  if ((length ^ complement) != 0xFFFF) return fail(InflateError::storedLength);
  storedLeft_ = static_cast<std::size_t>(length);
  enter(State::storedData);
  return Step::next;
}

InflateState2::Step InflateState2::copyStored(BitReader& in, Output& out) {
  const std::size_t count = std::min({storedLeft_, in.left(), out.room()});
  if (count != 0) std::memcpy(out.next, in.next, count);
  in.next += count;
  out.next += count;
  storedLeft_ -= count;
  if (storedLeft_ == 0) return endOfBlock();
  return in.left() == 0 ? Step::needInput : Step::needOutput;
}

InflateState2::Step InflateState2::readDynamicHead(BitReader& in) {
  using Result = inflate::DynamicHead::Result;
  InflateError error = InflateError::none;
  const Result result = head_.read(in, own_, error);
  if (result == Result::needInput) return Step::needInput;
  if (result == Result::failed) return fail(error);
  tables_ = &own_;
  pairsDue_ = kPairsPayBehind;
  havePairs_ = false;
  enter(State::dynamicData);
  return Step::next;
}

InflateState2::Step InflateState2::decodeBlock(BitReader& in, Output& out) {
  for (;;) {
    if (!copyPendingMatch(out)) return Step::needOutput;
    const Step step = in.left() >= inflate::kInputMargin && out.room() > inflate::kOutputMargin
                          ? decodeFast(in, out)
                          : decodeCarefully(in, out);
    if (step != Step::next || (state_ != State::fixedData && state_ != State::dynamicData))
      return step;
  }
}

InflateState2::Step InflateState2::decodeFast(BitReader& in, Output& out) {
  if (!havePairs_ && pairsDue_ == 0) {
    havePairs_ = inflate::buildPairTable(own_);
    if (!havePairs_) pairsDue_ = kNever;
  }
  std::size_t room = out.room() - inflate::kOutputMargin;
  if (!havePairs_) room = std::min(room, pairsDue_);
  const std::uint8_t* const start = out.next;
  const inflate::FastJob job{in,
                             out,
                             window_,
                             havePairs_ ? tables_->pairs.data() : tables_->literals.data(),
                             tables_->literals.data(),
                             tables_->distances.data(),
                             havePairs_,
                             out.next + room};
  const inflate::FastStop stop = inflate::fast(job);
  pairsDue_ -= std::min(pairsDue_, static_cast<std::size_t>(out.next - start));
  switch (stop) {
    case inflate::FastStop::margin:
      return Step::next;
    case inflate::FastStop::endOfBlock:
      return endOfBlock();
    case inflate::FastStop::badLiteral:
      return fail(InflateError::literalSymbol);
    case inflate::FastStop::badDistance:
      return fail(InflateError::distanceSymbol);
    case inflate::FastStop::tooFar:
      break;
  }
  return fail(InflateError::distanceTooFar);
}

// A length and its distance are taken as one, so that what is left over at the end of the input is
// the start of one symbol.
InflateState2::Step InflateState2::decodeCarefully(BitReader& in, Output& out) {
  for (;;) {
    in.fill();
    const Symbol symbol(tables_->literals.data(), inflate::kLiteralBits, in.bits);
    if (symbol.codeBits() > in.count) return Step::needInput;
    if (inflate::isSpecial(symbol.entry)) {
      if (!inflate::isEndOfBlock(symbol.entry)) return fail(InflateError::literalSymbol);
      in.take(symbol.bits());
      return endOfBlock();
    }
    if (inflate::isLiteral(symbol.entry)) {
      if (out.room() == 0) return Step::needOutput;
      *out.next++ = static_cast<std::uint8_t>(inflate::literalsIn(symbol.entry));
      in.take(symbol.bits());
      continue;
    }
    if (symbol.bits() > in.count) return Step::needInput;
    const std::uint64_t behind = in.bits >> symbol.bits();
    const unsigned left = in.count - symbol.bits();
    const Symbol far(tables_->distances.data(), inflate::kDistanceBits, behind);
    if (far.codeBits() > left) return Step::needInput;
    if (inflate::isSpecial(far.entry)) return fail(InflateError::distanceSymbol);
    if (far.bits() > left) return Step::needInput;
    const std::size_t distance = inflate::distanceOf(far.entry) + far.extra(behind);
    if (distance > out.size() + window_.filled()) return fail(InflateError::distanceTooFar);
    matchLeft_ = inflate::lengthOf(symbol.entry) + symbol.extra(in.bits);
    matchDistance_ = distance;
    in.take(symbol.bits() + far.bits());
    if (!copyPendingMatch(out)) return Step::needOutput;
  }
}

bool InflateState2::copyPendingMatch(Output& out) noexcept {
  while (matchLeft_ != 0) {
    std::size_t count = std::min(matchLeft_, out.room());
    if (count == 0) return false;
    if (matchDistance_ > out.size()) {
      count = window_.copy(out.next, matchDistance_ - out.size(), count);
    } else {
      for (std::size_t i = 0; i < count; ++i) out.next[i] = *(out.next + i - matchDistance_);
    }
    out.next += count;
    matchLeft_ -= count;
  }
  return true;
}

InflateState2::Step InflateState2::endOfBlock() {
  enter(State::blockType);
  return Step::next;
}

InflateState2::Step InflateState2::fail(InflateError error) noexcept {
  error_ = error;
  return Step::failed;
}

void InflateState2::enter(State state) {
  state_ = state;
  if (trace_ == nullptr) return;
  for (const auto& [named, name] : kStateNames) {
    if (named == static_cast<int>(state)) trace(name);
  }
}

void InflateState2::trace(const char* text) {
  if (trace_ == nullptr || traceLines_ > kMaxTraceLines) return;
  trace_->logInfo(++traceLines_ > kMaxTraceLines ? "The rest of the trace is left out." : text);
}

}  // namespace zantrel

#pragma once
// Inflate, the decoder of deflate (RFC 1951), as a state machine that takes its input and gives its
// output in pieces of any size.

#include <cstddef>
#include <cstdint>
#include <span>

#include "compress/inflate_dynamic.h"
#include "compress/inflate_error.h"
#include "compress/inflate_tables.h"
#include "compress/inflate_window.h"
#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/zantrel_object.h"

namespace zantrel {

class LogBase;

namespace inflate {
struct BitReader;
struct Output;
}  // namespace inflate

/// Codes are judged strictly: a set that is over-subscribed or incomplete is refused, except a
/// single code of one bit and a distance code without any symbol. Never reads or writes outside
/// what it is given; every call ends after work linear in both.
class InflateState2 final : public ZantrelObject {
 public:
  enum class Status {
    more,      ///< all input was taken, or the output is full
    finished,  ///< the final block has ended
    failed,    ///< errorCode() says why; so does every further call
  };

  static constexpr std::size_t kWindowSize = inflate::Window::kSize;

  InflateState2();

  /// Back to the start of a stream; the trace log stays.
  void reset() noexcept;

  /// Takes bytes from the front of `in` and writes to `out`, whose first `produced` bytes are new
  /// also after a failure. Once finished, `in` begins at the first byte behind the stream.
  Status run(ByteSpan& in, std::span<std::uint8_t> out, std::size_t& produced);

  /// Starts afresh and decodes as much of a stream as `in` holds, appending to `out`, which keeps
  /// what was produced before a failure. `more` says that the input ended too early. At most
  /// `limit` bytes are produced, 0 meaning as many as `out` can hold; a stream that goes on
  /// behind them fails.
  Status inflateAll(ByteSpan& in, DataBuffer& out, std::uint64_t limit);

  InflateError errorCode() const noexcept { return error_; }
  /// Bytes produced since the start of the stream.
  std::uint64_t totalProduced() const noexcept { return totalProduced_; }

  /// Logs, as information, the states as they are entered and every refill; null, the default, is
  /// silent. The log is not owned. One stream writes a bounded number of lines.
  void setTrace(LogBase* log) noexcept { trace_ = log; }

 private:
  // Numbered as the trace lines' readers know them.
  enum class State {
    blockType = -1,
    storedSetup = 0,
    fixedSetup = 1,
    dynamicSetup = 2,
    storedData = 10,
    fixedData = 11,
    dynamicData = 12,
  };
  // Why decoding paused, or that it goes on.
  enum class Step { next, needInput, needOutput, finished, failed };

  static Status statusOf(Step step) noexcept;
  Step decodePiece(ByteSpan& in, inflate::Output& out);
  Step decode(inflate::BitReader& in, inflate::Output& out);
  Step readBlockType(inflate::BitReader& in);
  Step readStoredHead(inflate::BitReader& in);
  Step readDynamicHead(inflate::BitReader& in);
  Step copyStored(inflate::BitReader& in, inflate::Output& out);
  Step decodeBlock(inflate::BitReader& in, inflate::Output& out);
  Step decodeFast(inflate::BitReader& in, inflate::Output& out);
  Step decodeCarefully(inflate::BitReader& in, inflate::Output& out);
  bool copyPendingMatch(inflate::Output& out) noexcept;
  Step endOfBlock();
  Step fail(InflateError error) noexcept;
  void enter(State state);
  void trace(const char* text);

  State state_ = State::blockType;
  bool lastBlock_ = false;
  bool finished_ = false;
  InflateError error_ = InflateError::none;
  std::uint64_t totalProduced_ = 0;

  // Bits taken from the input and not yet used: fewer than 8, or the start of a symbol.
  std::uint64_t bits_ = 0;
  unsigned bitCount_ = 0;

  std::size_t storedLeft_ = 0;
  std::size_t matchLeft_ = 0;
  std::size_t matchDistance_ = 0;

  inflate::DynamicHead head_;
  const inflate::Tables* tables_ = nullptr;  // the fixed or the block's own
  bool havePairs_ = false;
  std::size_t pairsDue_ = 0;  // output still to come from the code before pairs are built
  inflate::Tables own_;
  inflate::Window window_;

  LogBase* trace_ = nullptr;
  int traceLines_ = 0;
  bool ranDry_ = false;
};

}  // namespace zantrel

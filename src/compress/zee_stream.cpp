#include "compress/zee_stream.h"

#include <new>

namespace zantrel {

ZeeStream::ZeeStream(int level) : state_(new (std::nothrow) ZeeDeflateState) {
  restart(level);
}

void ZeeStream::restart(int level) noexcept {
  if (state_) state_->start(level);
  finished_ = false;
}

void ZeeStream::giveOutput() noexcept {
  const std::size_t given = state_->drain({nextOutput, outputSpace});
  nextOutput += given;
  outputSpace -= given;
}

ZeeStream::Status ZeeStream::step(bool finish) {
  if (!state_ || finished_) return Status::failed;
  giveOutput();
  if (!state_->hasOutput()) {
    const std::size_t taken = state_->fill({nextInput, inputLeft});
    nextInput += taken;
    inputLeft -= taken;
    if (!state_->run(finish && inputLeft == 0)) return Status::failed;
    giveOutput();
  }
  if (state_->finished() && !state_->hasOutput()) finished_ = true;
  return finished_ ? Status::finished : Status::more;
}

}  // namespace zantrel

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/zee_deflate_state.h"
#include "core/zantrel_object.h"

namespace zantrel {

/// A compressor stream: where input comes from, where output goes, and the state in between.
class ZeeStream final : public ZantrelObject {
 public:
  enum class Status { more, finished, failed };

  /// Level 0 (stored only) to 9 (smallest).
  explicit ZeeStream(int level);

  /// As good as a new stream, on the memory of this one.
  void restart(int level) noexcept;

  const std::uint8_t* nextInput = nullptr;
  std::size_t inputLeft = 0;
  std::uint8_t* nextOutput = nullptr;
  std::size_t outputSpace = 0;

  /// Takes input and gives output, moving the fields above, with at most one block's work. `finish`
  /// says that no input will follow what is given; to be called until the answer is finished.
  /// Failed: called again after that, or no memory.
  Status step(bool finish);
  /// Output that had no space yet.
  bool hasPendingOutput() const noexcept { return state_ && state_->hasOutput(); }

 private:
  void giveOutput() noexcept;

  std::unique_ptr<ZeeDeflateState> state_;
  bool finished_ = false;
};

}  // namespace zantrel

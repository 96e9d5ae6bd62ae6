#pragma once

#include <cstdint>

#include "core/data_buffer.h"
#include "core/data_source.h"

namespace zantrel {

/// Bytes of a source that can be looked at before they are taken.
class LookAhead final {
 public:
  explicit LookAhead(DataSource& source) noexcept : source_(source) {}

  /// Reads until at least `wanted` bytes are ahead or the source ends. False, the reason being
  /// logged, when reading failed.
  bool fill(std::size_t wanted, LogBase& log);
  /// What was read and not taken; valid until the next fill().
  ByteSpan ahead() const { return block_.bytes().subspan(used_); }
  void take(std::size_t count) noexcept { used_ += count; }
  /// Bytes taken so far.
  std::int64_t position() const {
    return source_.position() - static_cast<std::int64_t>(ahead().size());
  }

 private:
  DataSource& source_;
  DataBuffer block_;
  std::size_t used_ = 0;
};

}  // namespace zantrel

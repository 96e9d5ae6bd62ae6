#include "compress/look_ahead.h"

#include <algorithm>

#include "core/log_base.h"

namespace zantrel {

bool LookAhead::fill(std::size_t wanted, LogBase& log) {
  constexpr std::size_t kLeastRead = 65536;
  const std::size_t have = ahead().size();
  if (have >= wanted) return true;
  block_.removeFront(static_cast<std::uint32_t>(used_));
  used_ = 0;
  ByteSpan more;
  if (!source_.nextBlock(std::max(kLeastRead, wanted - have), more, log)) return false;
  if (block_.reserve(more.size()) && block_.append(more)) return true;
  log.logError("Out of memory.");
  return false;
}

}  // namespace zantrel

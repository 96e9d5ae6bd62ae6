#pragma once

#include <string>

#include "core/log_base.h"

namespace zantrel {

/// A log that a prefix stands in front of each sentence of; it says which part of a method speaks.
class PrefixedLog final {
 public:
  PrefixedLog(const char* prefix, LogBase& log) : prefix_(prefix), log_(log) {}

  bool logError(const char* sentence) { return log_.logError((prefix_ + sentence).c_str()); }
  bool logInfo(const char* sentence) { return log_.logInfo((prefix_ + sentence).c_str()); }
  /// For values, which have no prefix.
  LogBase& plain() const noexcept { return log_; }

 private:
  std::string prefix_;
  LogBase& log_;
};

}  // namespace zantrel

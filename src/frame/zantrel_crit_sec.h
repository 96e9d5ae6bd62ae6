#pragma once

#include "platform/mutex.h"

namespace zantrel {

/// A critical section. Components that several threads may use at once derive from it as a second
/// base and hold it from the start to the end of every public method and property access.
class ZantrelCritSec {
 public:
  /// Takes the section; the same thread may take it again and must leave it as often.
  void enterCriticalSection() { mutex_.lock(); }
  void leaveCriticalSection() { mutex_.unlock(); }

 private:
  RecursiveMutex mutex_;  // its destructor waits for a thread that is still inside
};

/// Holds a critical section, or nothing when there is none, for its own lifetime.
class CritSecLock {
 public:
  explicit CritSecLock(ZantrelCritSec& section) : CritSecLock(&section) {}
  explicit CritSecLock(ZantrelCritSec* section) : section_(section) {
    if (section_ != nullptr) section_->enterCriticalSection();
  }
  ~CritSecLock() {
    if (section_ != nullptr) section_->leaveCriticalSection();
  }
  CritSecLock(const CritSecLock&) = delete;
  CritSecLock& operator=(const CritSecLock&) = delete;

 private:
  ZantrelCritSec* section_;
};

}  // namespace zantrel

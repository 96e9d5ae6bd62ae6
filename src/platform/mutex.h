#pragma once
// A lock that its owner thread may take again: a critical section of the operating system.

namespace zantrel {

class RecursiveMutex {
 public:
  RecursiveMutex();
  /// Takes and releases the lock once first, so that a thread still inside is waited for.
  ~RecursiveMutex();
  RecursiveMutex(const RecursiveMutex&) = delete;
  RecursiveMutex& operator=(const RecursiveMutex&) = delete;

  void lock();
  bool try_lock();
  void unlock();

 private:
  // Storage of the system's own object; large enough on every platform (asserted where it is made).
  alignas(void*) unsigned char storage_[64];
};

}  // namespace zantrel

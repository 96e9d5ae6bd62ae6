#include "platform/mutex.h"

#include <new>

#include <windows.h>

namespace zantrel {

namespace {

CRITICAL_SECTION* section(unsigned char* storage) {
  return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

}  // namespace

RecursiveMutex::RecursiveMutex() {
  static_assert(sizeof(CRITICAL_SECTION) <= sizeof(storage_));
  static_assert(alignof(CRITICAL_SECTION) <= alignof(void*));
  InitializeCriticalSection(::new (storage_) CRITICAL_SECTION);
}

RecursiveMutex::~RecursiveMutex() {
  lock();
  unlock();
  DeleteCriticalSection(section(storage_));
}

void RecursiveMutex::lock() {
  EnterCriticalSection(section(storage_));
}

bool RecursiveMutex::try_lock() {
  return TryEnterCriticalSection(section(storage_)) != 0;
}

void RecursiveMutex::unlock() {
  LeaveCriticalSection(section(storage_));
}

}  // namespace zantrel

#include "platform/mutex.h"

#include <new>

#include <pthread.h>

#include "platform/fail_fast.h"

namespace zantrel {

namespace {

pthread_mutex_t* systemMutex(unsigned char* storage) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

}  // namespace

RecursiveMutex::RecursiveMutex() {
  static_assert(sizeof(pthread_mutex_t) <= sizeof(storage_));
  static_assert(alignof(pthread_mutex_t) <= alignof(void*));
  auto* mutex = ::new (storage_) pthread_mutex_t;
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  if (pthread_mutex_init(mutex, &attributes) != 0) failFast();
  pthread_mutexattr_destroy(&attributes);
}

RecursiveMutex::~RecursiveMutex() {
  lock();
  unlock();
  pthread_mutex_destroy(systemMutex(storage_));
}

void RecursiveMutex::lock() {
  if (pthread_mutex_lock(systemMutex(storage_)) != 0) failFast();
}

bool RecursiveMutex::try_lock() {
  return pthread_mutex_trylock(systemMutex(storage_)) == 0;
}

void RecursiveMutex::unlock() {
  if (pthread_mutex_unlock(systemMutex(storage_)) != 0) failFast();
}

}  // namespace zantrel

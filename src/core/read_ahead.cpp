#include "core/read_ahead.h"

#include <cstdint>

namespace zantrel {
namespace {

std::uint8_t* aligned(std::uint8_t* bytes) {
  const std::size_t over = reinterpret_cast<std::uintptr_t>(bytes) % ReadAhead::kAlignment;
  return over == 0 ? bytes : bytes + (ReadAhead::kAlignment - over);
}

}  // namespace

bool ReadAhead::start(InputFile& file, std::size_t pieceBytes) {
  file_ = &file;
  pieceBytes_ = pieceBytes;
  for (Slot& slot : slots_) {
    slot.bytes = slot.storage.prepare(pieceBytes + kAlignment);
    if (slot.bytes == nullptr) return false;
    slot.bytes = aligned(slot.bytes);
  }
  return thread_.start([this] { run(); });
}

void ReadAhead::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

OsError ReadAhead::next(ByteSpan& piece) {
  std::unique_lock lock(mutex_);
  Slot& slot = slots_[current_];
  if (inUse_) {
    // A short piece is the last one, and stays for all further calls.
    Slot& last = slots_[1 - current_];
    if (last.size < pieceBytes_) {
      piece = {};
      return last.error;
    }
    last.full = false;
    changed_.notify_all();
  }
  changed_.wait(lock, [&slot] { return slot.full; });
  piece = {slot.bytes, slot.size};
  inUse_ = true;
  current_ = 1 - current_;
  return slot.size == 0 ? slot.error : 0;
}

void ReadAhead::run() {
  for (std::size_t at = 0;; at = 1 - at) {
    Slot& slot = slots_[at];
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return stopping_ || !slot.full; });
    if (stopping_) return;
    lock.unlock();
    slot.error = fill(slot);
    const bool last = slot.size < pieceBytes_;
    lock.lock();
    slot.full = true;
    changed_.notify_all();
    if (last) return;
  }
}

/// Reads until the slot is full, the file ends, or reading fails.
OsError ReadAhead::fill(Slot& slot) {
  slot.size = 0;
  while (slot.size < pieceBytes_) {
    std::size_t got = 0;
    const OsError error = file_->read(slot.bytes + slot.size, pieceBytes_ - slot.size, got);
    if (error != 0) return error;
    if (got == 0) return 0;
    slot.size += got;
  }
  return 0;
}

}  // namespace zantrel

#include "core/ext_ptr_array.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/storage.h"

namespace zantrel {
namespace {

constexpr std::int32_t kMaxIncrement = 100'000;

}  // namespace

ExtPtrArray::~ExtPtrArray() {
  storage::release(items_);
}

ZantrelObject* ExtPtrArray::elementAt(std::int32_t i) const noexcept {
  return i >= 0 && i < count_ ? items_[i] : nullptr;
}

ZantrelObject* ExtPtrArray::lastElement() const noexcept {
  return elementAt(count_ - 1);
}

bool ExtPtrArray::makeRoom() {
  if (items_ != nullptr && count_ < capacity_) return true;
  std::int64_t newCapacity = capacity_;
  if (count_ + std::int64_t{1} > capacity_) {
    newCapacity = std::max<std::int64_t>(newCapacity + growIncrement_, count_ + std::int64_t{1});
  }
  constexpr std::uint64_t kMaxSlots =
      std::min<std::uint64_t>(std::numeric_limits<std::int32_t>::max(),
                              std::numeric_limits<std::size_t>::max() / sizeof(ZantrelObject*));
  if (static_cast<std::uint64_t>(newCapacity) > kMaxSlots) return false;

  const std::size_t slots = static_cast<std::size_t>(newCapacity);
  void* block = storage::reallocate(items_, slots * sizeof(ZantrelObject*));
  if (block == nullptr) return false;
  items_ = static_cast<ZantrelObject**>(block);
  std::fill(items_ + count_, items_ + slots, nullptr);
  if (newCapacity > capacity_ && growIncrement_ < kMaxIncrement) {
    growIncrement_ = static_cast<std::int32_t>(std::min<std::int64_t>(newCapacity, kMaxIncrement));
  }
  capacity_ = static_cast<std::int32_t>(newCapacity);
  return true;
}

bool ExtPtrArray::appendPtr(ZantrelObject* p) {
  return insertAt(count_, p);
}

bool ExtPtrArray::insertAt(std::int32_t i, ZantrelObject* p) {
  if (i < 0 || i > count_ || !makeRoom()) return false;
  std::copy_backward(items_ + i, items_ + count_, items_ + count_ + 1);
  items_[i] = p;
  ++count_;
  return true;
}

ZantrelObject* ExtPtrArray::removeAt(std::int32_t i) {
  if (i < 0 || i >= count_) return nullptr;
  ZantrelObject* const taken = items_[i];
  std::copy(items_ + i + 1, items_ + count_, items_ + i);
  items_[--count_] = nullptr;
  return taken;
}

ZantrelObject* ExtPtrArray::pop() {
  return removeAt(count_ - 1);
}

void ExtPtrArray::removeAll() {
  if (items_ != nullptr) std::fill(items_, items_ + count_, nullptr);
  count_ = 0;
}

void ExtPtrArray::deleteAll() {
  for (std::int32_t i = 0; i < count_; ++i) {
    ZantrelObject* const element = items_[i];
    items_[i] = nullptr;
    delete element;
  }
  count_ = 0;
}

void ExtPtrArray::sort(Compare compare) {
  std::stable_sort(
      items_, items_ + count_,
      [compare](const ZantrelObject* a, const ZantrelObject* b) { return compare(a, b) < 0; });
}

}  // namespace zantrel

#pragma once
// Growable list of pointers to objects: children, headers, attachments.

#include <cstdint>

#include "core/zantrel_object.h"

namespace zantrel {

/// Its destructor frees the list only. An owner of the elements calls deleteAll() first, so that
/// one type serves for owning and for non-owning lists.
class ExtPtrArray final : public ZantrelObject {
 public:
  /// Negative, zero or positive, as for the C library's qsort(). Slots may hold null.
  using Compare = int (*)(const ZantrelObject* a, const ZantrelObject* b);

  ExtPtrArray() noexcept = default;
  ~ExtPtrArray() override;
  ExtPtrArray(const ExtPtrArray&) = delete;
  ExtPtrArray& operator=(const ExtPtrArray&) = delete;

  std::int32_t getSize() const noexcept { return count_; }
  std::int32_t capacity() const noexcept { return capacity_; }
  /// Null when i is out of range.
  ZantrelObject* elementAt(std::int32_t i) const noexcept;
  /// Null when the list is empty.
  ZantrelObject* lastElement() const noexcept;
  /// False, with the list as it was, when storage cannot be had.
  bool appendPtr(ZantrelObject* p);
  /// Inserts before element i (at the end when i is the count); false when i is out of range or
  /// storage cannot be had.
  bool insertAt(std::int32_t i, ZantrelObject* p);
  /// Takes an element out and returns it; those behind it move down. Null when i is out of range.
  ZantrelObject* removeAt(std::int32_t i);
  /// Takes the last element out and returns it; null when the list is empty.
  ZantrelObject* pop();
  /// Count 0; nothing is deleted.
  void removeAll();
  /// Deletes every element, then count 0.
  void deleteAll();
  /// Stable; survives a comparison that contradicts itself.
  void sort(Compare compare);

 private:
  bool makeRoom();

  std::int32_t growIncrement_ = 5;
  std::int32_t capacity_ = 5;
  std::int32_t count_ = 0;
  ZantrelObject** items_ = nullptr;
};

}  // namespace zantrel

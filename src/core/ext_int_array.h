#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/zantrel_object.h"

namespace zantrel {

/// Growable list of 32-bit integers.
class ExtIntArray final : public ZantrelObject {
 public:
  std::int32_t getSize() const noexcept { return static_cast<std::int32_t>(items_.size()); }
  /// 0 when i is out of range.
  std::int32_t elementAt(std::int32_t i) const noexcept { return isIndex(i) ? items_[at(i)] : 0; }
  /// False when i is out of range.
  bool setAt(std::int32_t i, std::int32_t value) noexcept {
    if (!isIndex(i)) return false;
    items_[at(i)] = value;
    return true;
  }
  void append(std::int32_t value) { items_.push_back(value); }
  /// False when i is out of range; the elements behind it move down.
  bool removeAt(std::int32_t i) {
    if (!isIndex(i)) return false;
    items_.erase(items_.begin() + i);
    return true;
  }
  void removeAll() noexcept { items_.clear(); }
  /// Place of the first element with a value, or -1.
  std::int32_t find(std::int32_t value) const noexcept {
    const auto found = std::find(items_.begin(), items_.end(), value);
    return found != items_.end() ? static_cast<std::int32_t>(found - items_.begin()) : -1;
  }
  void sort() { std::sort(items_.begin(), items_.end()); }
  std::span<const std::int32_t> items() const noexcept { return items_; }

 private:
  static std::size_t at(std::int32_t i) noexcept { return static_cast<std::size_t>(i); }
  bool isIndex(std::int32_t i) const noexcept { return i >= 0 && at(i) < items_.size(); }

  std::vector<std::int32_t> items_;
};

}  // namespace zantrel

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace zantrel {

/// A stack of plain values. The first few need no memory but its own, so that work on small
/// documents does not begin with allocations. Throws std::bad_alloc.
template <class T, std::size_t kInside>
class SmallStack final {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  SmallStack() = default;
  SmallStack(const SmallStack&) = delete;
  SmallStack& operator=(const SmallStack&) = delete;

  bool empty() const { return end_ == begin_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
  T* data() { return begin_; }
  T& back() { return end_[-1]; }
  const T& back() const { return end_[-1]; }
  void push(const T& value) {
    if (end_ == limit_) grow();
    *end_++ = value;
  }
  void pop() { --end_; }
  /// Down to a size that it had before.
  void shrink(std::size_t size) { end_ = begin_ + size; }

 private:
  void grow() {
    const std::size_t count = size();
    std::unique_ptr<T[]> larger(new T[2 * count]);
    std::copy(begin_, end_, larger.get());
    outside_ = std::move(larger);
    begin_ = outside_.get();
    end_ = begin_ + count;
    limit_ = begin_ + 2 * count;
  }

  T inside_[kInside];
  std::unique_ptr<T[]> outside_;
  T* begin_ = inside_;
  T* end_ = inside_;
  T* limit_ = inside_ + kInside;
};

}  // namespace zantrel

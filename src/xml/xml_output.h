#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include "core/string_buffer.h"

namespace zantrel {

/// Text under writing: many small pieces that go to the end of a string buffer at the cost of a
/// copy. The buffer has them when this is destroyed. Throws std::bad_alloc when it cannot hold
/// them.
class XmlOutput final {
 public:
  explicit XmlOutput(StringBuffer& out) : out_(out) {}
  ~XmlOutput() { give(); }
  XmlOutput(const XmlOutput&) = delete;
  XmlOutput& operator=(const XmlOutput&) = delete;

  /// Where up to `size` bytes may be written; wrote() then says where they end.
  char* room(std::size_t size) {
    if (static_cast<std::size_t>(end_ - at_) < size) grow(size);
    return at_;
  }
  void wrote(char* end) { at_ = end; }

  void put(char c) {
    *room(1) = c;
    ++at_;
  }
  void put(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(room(text.size()), text.data(), text.size());
    at_ += text.size();
  }
  void putBlanks(std::size_t count) {
    if (count == 0) return;
    std::memset(room(count), ' ', count);
    at_ += count;
  }

 private:
  void give() {
    if (start_ != nullptr) out_.commit(static_cast<std::size_t>(at_ - start_));
    start_ = at_ = end_ = nullptr;
  }
  // At least as much again as there is, so that the work stays linear.
  void grow(std::size_t size) {
    constexpr std::size_t kLeast = 4096;
    give();
    std::size_t taken = std::max({size, kLeast, std::size_t{out_.getSize()}});
    start_ = out_.prepare(taken);
    if (start_ == nullptr) start_ = out_.prepare(taken = size);
    if (start_ == nullptr) throw std::bad_alloc();
    at_ = start_;
    end_ = start_ + taken;
  }

  StringBuffer& out_;
  char* start_ = nullptr;
  char* at_ = nullptr;
  char* end_ = nullptr;
};

}  // namespace zantrel

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include "core/byte_block.h"
#include "core/string_buffer.h"

namespace zantrel {

/// Text under writing: many small pieces that go to the end of a string buffer at the cost of a
/// copy. Who writes keeps the place up to which the text is written, null at first, and hands it to
/// each function, which returns the next; finish() gives the text to the buffer. Throws
/// std::bad_alloc when the buffer cannot hold it.
class XmlOutput final {
 public:
  explicit XmlOutput(StringBuffer& out) : out_(out) {}
  ~XmlOutput() { give(start_); }
  XmlOutput(const XmlOutput&) = delete;
  XmlOutput& operator=(const XmlOutput&) = delete;

  /// Room for `size` bytes at the place that is returned, and for `more` when there has to be made
  /// any. A block of bytes more may be overwritten.
  char* room(char* to, std::size_t size, std::size_t more = 0) {
    return static_cast<std::size_t>(end_ - to) >= size ? to : grow(to, size, more);
  }
  char* put(char* to, std::string_view text) {
    to = room(to, text.size());
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    return to + text.size();
  }
  /// The same for short texts behind which XmlSlice::kSlack bytes can be read.
  char* putSlice(char* to, std::string_view text) {
    return copyBlocks(text.data(), text.size(), room(to, text.size()));
  }
  void finish(char* to) { give(to); }

 private:
  void give(const char* to) {
    if (start_ != nullptr) out_.commit(static_cast<std::size_t>(to - start_));
    start_ = end_ = nullptr;
  }
  // At least as much again as there is, so that the work stays linear.
  char* grow(const char* to, std::size_t size, std::size_t more) {
    constexpr std::size_t kLeast = 4096;
    constexpr std::size_t kSlack = ByteBlock::kSize;
    give(to);
    std::size_t taken = std::max({size + more, kLeast, std::size_t{out_.getSize()}});
    start_ = out_.prepare(taken + kSlack);
    if (start_ == nullptr) start_ = out_.prepare((taken = size) + kSlack);
    if (start_ == nullptr) throw std::bad_alloc();
    end_ = start_ + taken;
    return start_;
  }

  StringBuffer& out_;
  char* start_ = nullptr;
  char* end_ = nullptr;
};

}  // namespace zantrel

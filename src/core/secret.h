#pragma once
// What holds keys and passwords: overwritten before it is replaced and when it goes.

#include <utility>

#include "core/data_buffer.h"
#include "core/xstring.h"

namespace zantrel {

class SecretBuffer final {
 public:
  SecretBuffer() = default;
  ~SecretBuffer() { clear(); }
  SecretBuffer(const SecretBuffer&) = delete;
  SecretBuffer& operator=(const SecretBuffer&) = delete;

  ByteSpan bytes() const { return buffer_.bytes(); }
  bool isEmpty() const { return buffer_.getSize() == 0; }
  void clear() { buffer_.secureClear(); }
  /// Replaces the content by a copy, which may be of a part of it. False, the content being gone,
  /// when storage cannot be had.
  bool set(ByteSpan bytes) {
    DataBuffer fresh;
    const bool stored = fresh.reserve(bytes.size()) && fresh.append(bytes);
    clear();
    buffer_ = std::move(fresh);
    return stored;
  }
  /// For what writes its result into a buffer; it should reserve first, since a buffer that grows
  /// leaves copies behind.
  DataBuffer& buffer() { return buffer_; }

 private:
  DataBuffer buffer_;
};

class SecretText final {
 public:
  SecretText() = default;
  ~SecretText() { text_.wipe(); }
  SecretText(const SecretText&) = delete;
  SecretText& operator=(const SecretText&) = delete;

  const XString& text() const { return text_; }
  void set(const XString& text) {
    text_.wipe();
    text_ = text;
  }

 private:
  XString text_;
};

}  // namespace zantrel

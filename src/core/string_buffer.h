#pragma once
// Growable NUL-terminated byte string, used for every internal text operation. Its content is
// UTF-8, ANSI or any other 8-bit encoding, as its user decides.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "core/bytes.h"
#include "core/guard_byte.h"
#include "core/zantrel_object.h"

namespace zantrel {

class DataBuffer;

class StringBuffer final : public ZantrelObject {
 public:
  StringBuffer();
  explicit StringBuffer(const char* text);
  explicit StringBuffer(std::string_view text);
  ~StringBuffer() override;
  StringBuffer(const StringBuffer& other);
  StringBuffer& operator=(const StringBuffer& other);
  StringBuffer(StringBuffer&& other) noexcept;
  StringBuffer& operator=(StringBuffer&& other) noexcept;

  /// An empty buffer with room for exactly `capacity` bytes and the terminator; without storage
  /// for 0.
  static StringBuffer withCapacity(std::size_t capacity);

  const char* getString() const {
    guard_.check();
    return data_;
  }
  std::uint32_t getSize() const {
    guard_.check();
    return size_;
  }
  std::int32_t capacity() const { return capacity_; }
  bool empty() const { return getSize() == 0; }
  std::string_view view() const { return {getString(), size_}; }

  /// Null or empty does nothing. When storage cannot be had nothing is appended and the result is
  /// false; so too when the size would pass 2^31-1. The text may lie inside this buffer.
  bool append(const char* text);
  bool append(const void* bytes, std::size_t count) {
    guard_.check();
    if (bytes == nullptr || count == 0) return true;
    if (count >= room()) return appendGrowing(bytes, count);
    std::memmove(data_ + size_, bytes, count);
    size_ += static_cast<std::uint32_t>(count);
    data_[size_] = '\0';
    return true;
  }
  bool append(const StringBuffer& other) { return append(other.data_, other.getSize()); }
  bool append(std::string_view text) { return append(text.data(), text.size()); }
  bool appendChar(char byte) {
    guard_.check();
    if (room() <= 1) return appendGrowing(&byte, 1);
    data_[size_++] = byte;
    data_[size_] = '\0';
    return true;
  }
  bool appendInt(std::int64_t value);
  /// Replaces the content; the text may lie inside this buffer.
  bool setString(const char* text);
  bool setString(std::string_view text);

  /// Takes over the block of a byte buffer as the content, so that a conversion into bytes becomes
  /// text without a copy; the byte buffer is then empty. False, with both unchanged, when the
  /// content is borrowed or too large.
  bool takeBytes(DataBuffer& bytes);

  /// Room for `extra` more bytes with one exact allocation.
  bool reserve(std::size_t extra);
  /// Room for `extra` more bytes, as a pointer to write them to, or null; commit() then says how
  /// many were written and terminates the text.
  char* prepare(std::size_t extra);
  void commit(std::size_t written);

  /// Length 0, storage kept.
  void clear();
  /// Overwrites the content with blanks, then clears.
  void secureClear();
  /// Gives back storage beyond the content.
  void minimizeMemory();
  void shorten(std::uint32_t n);
  void truncate(std::uint32_t size);

  /// The byte at i, or 0 when i is out of range.
  char charAt(std::int64_t i) const;
  char lastChar() const;

  /// Removes leading and trailing space, tab, LF and CR.
  void trim2();
  /// ASCII letters, and bytes 0xC0..0xDF get 32 added: deliberately also 0xD7 and 0xDF.
  void toLowerCase();
  /// ASCII letters only.
  void toUpperCase();
  /// Replaces from left to right without looking at replaced text again; returns how many.
  std::uint32_t replaceAllOccurances(std::string_view find, std::string_view replacement);
  bool replaceFirstOccurance(std::string_view find, std::string_view replacement);
  void replaceChar(char from, char to);
  std::uint32_t removeCharOccurances(char c);
  /// Removes every CR, then makes every LF a CRLF.
  void toCRLF();
  /// Makes every CRLF a LF.
  void toLF();

  bool equals(std::string_view text) const;
  bool equalsIgnoreCase(std::string_view text) const;
  bool beginsWith(std::string_view prefix) const;
  bool beginsWithIgnoreCase(std::string_view prefix) const;
  bool containsSubstring(std::string_view text) const;
  bool containsSubstringNoCase(std::string_view text) const;

  /// Reads pairs of hexadecimal digits and appends the bytes. Digits are not validated; a last
  /// unpaired character is ignored.
  bool hexStringToBinary(DataBuffer& out) const;

 private:
  struct NoStorage {};
  explicit StringBuffer(NoStorage) noexcept;

  /// Bytes behind the content, that of the terminator included.
  std::uint32_t room() const noexcept { return static_cast<std::uint32_t>(capacity_) - size_; }
  bool appendGrowing(const void* bytes, std::size_t count);
  bool reallocate(std::uint64_t newCapacity);
  void setSize(std::uint32_t size) noexcept;
  void takeFrom(StringBuffer& other) noexcept;
  void release() noexcept;

  GuardByte<0xAA> guard_;
  std::uint8_t flag_ = 0;
  char* data_;
  std::int32_t capacity_ = 0;
  std::uint32_t size_ = 0;
  std::int32_t growIncrement_ = 202;
};

}  // namespace zantrel

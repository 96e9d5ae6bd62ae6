#pragma once
// Growable byte array: bodies, file contents, cipher input and output, the UTF-16 form of texts.
// Small fixed growth steps keep the peak memory low; code that knows or can bound its output calls
// reserve() or prepare() first and so pays for one allocation only.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/bytes.h"
#include "core/guard_byte.h"
#include "core/zantrel_object.h"

namespace zantrel {

class LogBase;
class StringBuffer;

class DataBuffer final : public ZantrelObject {
 public:
  DataBuffer() noexcept = default;
  /// An empty buffer with room for exactly `capacity` bytes (none if storage cannot be had).
  explicit DataBuffer(std::uint32_t capacity);
  ~DataBuffer() override;
  DataBuffer(const DataBuffer& other);
  DataBuffer& operator=(const DataBuffer& other);
  DataBuffer(DataBuffer&& other) noexcept;
  DataBuffer& operator=(DataBuffer&& other) noexcept;

  std::uint32_t getSize() const {
    guard_.check();
    return size_;
  }
  std::uint32_t capacity() const { return capacity_; }
  /// First byte; may be null while the buffer is empty.
  std::uint8_t* getData2() const {
    guard_.check();
    return data_;
  }
  /// Byte i, or null when i is not below the size.
  std::uint8_t* getDataAt2(std::uint32_t i) const;
  ByteSpan bytes() const { return {getData2(), size_}; }
  std::string_view text() const { return asText(bytes()); }

  /// Size 0; the block is kept.
  void clear();
  /// Overwrites the content with zeros, then clears.
  void secureClear();
  /// Frees the block too.
  void clearWithDeallocate();
  /// Gives back storage beyond the content.
  void minimizeMemory();

  /// Null bytes or count 0 do nothing and succeed. The bytes may lie inside this buffer. If storage
  /// cannot be had the buffer drops all its content and the result is false (deliberate: a failed
  /// large allocation gives memory back at once). Sizes past 2^32-1 count as such a failure.
  bool append(const void* bytes, std::size_t count) {
    guard_.check();
    if (bytes == nullptr || count == 0) return true;
    if (count > capacity_ - size_) return appendGrowing(bytes, count);
    std::memmove(data_ + size_, bytes, count);
    size_ += static_cast<std::uint32_t>(count);
    return true;
  }
  bool append(const DataBuffer& other) { return append(other.data_, other.size_); }
  bool append(ByteSpan bytes) { return append(bytes.data(), bytes.size()); }
  bool append(std::string_view text) { return append(text.data(), text.size()); }
  bool appendChar(std::uint8_t byte) {
    guard_.check();
    if (size_ == capacity_ && !growForChar()) return false;
    data_[size_++] = byte;
    return true;
  }

  /// Room for `extra` more bytes with one exact allocation. Content is kept when it fails.
  bool reserve(std::size_t extra);
  /// Room for `extra` more bytes, as a pointer to write them to, or null (content kept); commit()
  /// then says how many were written.
  std::uint8_t* prepare(std::size_t extra);
  void commit(std::size_t written);

  /// Drops the last n bytes, or all when there are fewer.
  void shorten(std::uint32_t n);
  /// Drops everything behind the first `size` bytes.
  void truncate(std::uint32_t size);
  /// Drops the first n bytes, or all when there are fewer.
  void removeFront(std::uint32_t n);

  /// Adopts a block without owning it; it must outlive the buffer or the first growth.
  void borrowData(void* data, std::uint32_t count);
  bool isBorrowed() const { return borrowed_; }

  /// Reverses every group of four bytes; a rest of 2 or 3 bytes is reversed as well.
  void byteSwap4321();
  /// Appends two upper-case hexadecimal digits a byte.
  void toHexString(StringBuffer& out) const;
  /// Finds the charset that an XML declaration names. Looks at the first "encoding" anywhere in the
  /// content, comments included (deliberate), up to the first zero byte.
  bool getXmlCharset(StringBuffer& out) const;

  /// Replaces the content by a whole file's. After a failure the buffer is empty, the reason in
  /// log.
  bool loadFileUtf8(const char* path, LogBase& log);
  /// Writes the content to a file; what stood there before survives a failure.
  bool saveToFileUtf8(const char* path, LogBase& log) const;

  bool equals(const DataBuffer& other) const;

 private:
  friend class StringBuffer;  // takes over the block

  bool appendGrowing(const void* bytes, std::size_t count);
  bool growForChar();
  bool growOrDrop(std::uint64_t needed, std::uint64_t wanted);
  bool reallocate(std::uint64_t newCapacity);
  void takeFrom(DataBuffer& other) noexcept;
  void release() noexcept;

  GuardByte<0xDB> guard_;
  bool borrowed_ = false;
  std::uint8_t* data_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = 0;
};

}  // namespace zantrel

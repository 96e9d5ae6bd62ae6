#include "core/data_buffer.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "core/ascii_text.h"
#include "core/encode/hex.h"
#include "core/storage.h"
#include "core/string_buffer.h"
#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

// Small fixed steps and no doubling keep the peak memory of large buffers low.
constexpr std::uint64_t kGrowStep = 20'000;
constexpr std::uint64_t kGrowStepForChar = 10'000;
constexpr std::uint64_t kMaxSize = std::numeric_limits<std::uint32_t>::max();

}  // namespace

DataBuffer::DataBuffer(std::uint32_t capacity) {
  if (capacity != 0) reallocate(capacity);
}

DataBuffer::~DataBuffer() {
  guard_.check();
  release();
}

DataBuffer::DataBuffer(const DataBuffer& other) : ZantrelObject() {
  if (reserve(other.getSize())) append(other);
}

DataBuffer& DataBuffer::operator=(const DataBuffer& other) {
  if (this == &other) return *this;
  if (borrowed_) release();  // a lent block is not overwritten by another's content
  clear();
  if (reserve(other.getSize())) append(other);
  return *this;
}

DataBuffer::DataBuffer(DataBuffer&& other) noexcept : ZantrelObject() {
  takeFrom(other);
}

DataBuffer& DataBuffer::operator=(DataBuffer&& other) noexcept {
  guard_.check();
  if (this == &other) return *this;
  release();
  takeFrom(other);
  return *this;
}

void DataBuffer::takeFrom(DataBuffer& other) noexcept {
  other.guard_.check();
  borrowed_ = std::exchange(other.borrowed_, false);
  data_ = std::exchange(other.data_, nullptr);
  size_ = std::exchange(other.size_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
}

void DataBuffer::release() noexcept {
  if (!borrowed_) storage::release(data_);
  data_ = nullptr;
  borrowed_ = false;
  size_ = 0;
  capacity_ = 0;
}

bool DataBuffer::reallocate(std::uint64_t newCapacity) {
  if (newCapacity > std::min<std::uint64_t>(kMaxSize, std::numeric_limits<std::size_t>::max())) {
    return false;
  }
  const std::size_t bytes = static_cast<std::size_t>(newCapacity);
  void* block = nullptr;
  if (borrowed_) {
    block = storage::allocate(bytes);
    if (block != nullptr && size_ != 0) std::memcpy(block, data_, size_);
  } else {
    block = storage::reallocate(data_, bytes);
  }
  if (block == nullptr) return false;
  data_ = static_cast<std::uint8_t*>(block);
  borrowed_ = false;
  capacity_ = static_cast<std::uint32_t>(newCapacity);
  return true;
}

/// Grows to the wanted capacity, or at the largest size to what is needed at least. On failure all
/// content goes, deliberately: a failed large allocation gives memory back at once.
bool DataBuffer::growOrDrop(std::uint64_t needed, std::uint64_t wanted) {
  if (needed <= kMaxSize && reallocate(std::min(wanted, kMaxSize))) return true;
  release();
  return false;
}

bool DataBuffer::appendGrowing(const void* bytes, std::size_t count) {
  const auto* source = static_cast<const std::uint8_t*>(bytes);
  const bool inside = std::less_equal<>()(data_, source) &&
                      std::less<>()(source, static_cast<const std::uint8_t*>(data_ + capacity_));
  const std::size_t offset = inside ? static_cast<std::size_t>(source - data_) : 0;
  const std::uint64_t n = count;
  // The first test keeps the sum from wrapping.
  const std::uint64_t needed = n > kMaxSize ? n : size_ + n;
  if (!growOrDrop(needed, size_ + std::max(std::min(n, kMaxSize), kGrowStep))) return false;
  std::memmove(data_ + size_, inside ? data_ + offset : source, count);
  size_ += static_cast<std::uint32_t>(count);
  return true;
}

bool DataBuffer::growForChar() {
  return growOrDrop(size_ + std::uint64_t{1}, size_ + kGrowStepForChar);
}

bool DataBuffer::reserve(std::size_t extra) {
  guard_.check();
  if (extra <= capacity_ - size_) return true;
  if (extra > kMaxSize) return false;
  return reallocate(size_ + static_cast<std::uint64_t>(extra));
}

std::uint8_t* DataBuffer::prepare(std::size_t extra) {
  if (!reserve(extra)) return nullptr;
  // Room for nothing is still an answer that is not null.
  if (data_ == nullptr && !reallocate(1)) return nullptr;
  return data_ + size_;
}

void DataBuffer::commit(std::size_t written) {
  guard_.check();
  if (written > capacity_ - size_) failFast();
  size_ += static_cast<std::uint32_t>(written);
}

std::uint8_t* DataBuffer::getDataAt2(std::uint32_t i) const {
  guard_.check();
  return i < size_ ? data_ + i : nullptr;
}

void DataBuffer::clear() {
  guard_.check();
  size_ = 0;
}

void DataBuffer::secureClear() {
  guard_.check();
  if (size_ != 0) secureWipe(data_, size_);
  size_ = 0;
}

void DataBuffer::clearWithDeallocate() {
  guard_.check();
  release();
}

void DataBuffer::minimizeMemory() {
  guard_.check();
  if (borrowed_ || capacity_ == size_) return;
  if (size_ == 0) return release();
  reallocate(size_);
}

void DataBuffer::shorten(std::uint32_t n) {
  guard_.check();
  size_ -= std::min(n, size_);
}

void DataBuffer::truncate(std::uint32_t size) {
  guard_.check();
  size_ = std::min(size, size_);
}

void DataBuffer::removeFront(std::uint32_t n) {
  guard_.check();
  const std::uint32_t dropped = std::min(n, size_);
  if (dropped == 0) return;
  std::memmove(data_, data_ + dropped, size_ - dropped);
  size_ -= dropped;
}

void DataBuffer::borrowData(void* data, std::uint32_t count) {
  guard_.check();
  release();
  data_ = static_cast<std::uint8_t*>(data);
  size_ = data != nullptr ? count : 0;
  capacity_ = size_;
  borrowed_ = data != nullptr;
}

void DataBuffer::byteSwap4321() {
  guard_.check();
  for (std::uint32_t i = 0; i < size_; i += std::min<std::uint32_t>(4, size_ - i)) {
    std::reverse(data_ + i, data_ + i + std::min<std::uint32_t>(4, size_ - i));
  }
}

void DataBuffer::toHexString(StringBuffer& out) const {
  hexEncode(bytes(), out);
}

bool DataBuffer::getXmlCharset(StringBuffer& out) const {
  out.clear();
  const std::string_view content = text().substr(0, text().find('\0'));
  static constexpr std::string_view kWord = "encoding";
  const auto sameLetter = [](char c, char lower) { return asciiLower(c) == lower; };
  const auto word =
      std::search(content.begin(), content.end(), kWord.begin(), kWord.end(), sameLetter);
  if (word == content.end()) return false;

  std::size_t at =
      content.find('=', static_cast<std::size_t>(word - content.begin()) + kWord.size());
  if (at == std::string_view::npos) return false;
  at = content.find_first_not_of(kTrimmedBlanks, at + 1);
  if (at == std::string_view::npos) return false;
  if (content[at] == '"') ++at;
  if (at < content.size() && content[at] == '\'') ++at;
  const std::size_t end = content.find_first_of("\"'", at);
  if (end == std::string_view::npos || end == at) return false;
  return out.append(content.substr(at, end - at));
}

bool DataBuffer::equals(const DataBuffer& other) const {
  return text() == other.text();
}

}  // namespace zantrel

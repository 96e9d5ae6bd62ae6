#include "core/string_buffer.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <utility>

#include "core/data_buffer.h"
#include "core/storage.h"

namespace zantrel {
namespace {

constexpr std::int32_t kFirstCapacity = 202;
constexpr std::int32_t kLeastCapacity = 4;
constexpr std::int32_t kMaxIncrement = 500'000;
constexpr std::uint64_t kMaxCapacity = std::numeric_limits<std::int32_t>::max();

/// Stands in where no storage could be had. It is never written to and never freed.
const char kNoText[1] = {'\0'};

char* noText() noexcept {
  return const_cast<char*>(kNoText);
}

}  // namespace

StringBuffer::StringBuffer(NoStorage) noexcept : data_(noText()) {}

StringBuffer::StringBuffer() : StringBuffer(NoStorage{}) {
  if (!reallocate(kFirstCapacity)) reallocate(kLeastCapacity);
}

StringBuffer::StringBuffer(const char* text)
    : StringBuffer(text != nullptr ? std::string_view(text) : std::string_view()) {}

StringBuffer::StringBuffer(std::string_view text) : StringBuffer(NoStorage{}) {
  const std::uint64_t exact = std::uint64_t{text.size()} + 1;
  if (reallocate(std::max<std::uint64_t>(exact, kFirstCapacity)) || reallocate(kLeastCapacity)) {
    append(text);
  }
}

StringBuffer::~StringBuffer() {
  guard_.check();
  release();
}

StringBuffer::StringBuffer(const StringBuffer& other) : StringBuffer(other.view()) {}

StringBuffer& StringBuffer::operator=(const StringBuffer& other) {
  if (this != &other) setString(other.view());
  return *this;
}

StringBuffer::StringBuffer(StringBuffer&& other) noexcept : StringBuffer(NoStorage{}) {
  takeFrom(other);
}

StringBuffer& StringBuffer::operator=(StringBuffer&& other) noexcept {
  guard_.check();
  if (this == &other) return *this;
  release();
  takeFrom(other);
  return *this;
}

StringBuffer StringBuffer::withCapacity(std::size_t capacity) {
  StringBuffer buffer{NoStorage{}};
  if (capacity != 0) buffer.reserve(capacity);
  return buffer;
}

void StringBuffer::takeFrom(StringBuffer& other) noexcept {
  other.guard_.check();
  flag_ = std::exchange(other.flag_, std::uint8_t{0});
  data_ = std::exchange(other.data_, noText());
  capacity_ = std::exchange(other.capacity_, 0);
  size_ = std::exchange(other.size_, 0);
  growIncrement_ = std::exchange(other.growIncrement_, kFirstCapacity);
}

void StringBuffer::release() noexcept {
  if (capacity_ != 0) storage::release(data_);
  data_ = noText();
  capacity_ = 0;
  size_ = 0;
}

bool StringBuffer::reallocate(std::uint64_t newCapacity) {
  if (newCapacity > kMaxCapacity) return false;
  const bool first = capacity_ == 0;
  void* const block =
      storage::reallocate(first ? nullptr : data_, static_cast<std::size_t>(newCapacity));
  if (block == nullptr) return false;
  data_ = static_cast<char*>(block);
  capacity_ = static_cast<std::int32_t>(newCapacity);
  if (first) data_[0] = '\0';
  return true;
}

/// Small buffers grow by about half their size, none by more than 500,000 bytes beyond the need.
bool StringBuffer::appendGrowing(const void* bytes, std::size_t count) {
  const auto* source = static_cast<const char*>(bytes);
  const bool inside = std::less_equal<>()(static_cast<const char*>(data_), source) &&
                      std::less<>()(source, static_cast<const char*>(data_ + capacity_));
  const std::size_t offset = inside ? static_cast<std::size_t>(source - data_) : 0;

  if (count >= kMaxCapacity - size_) return false;
  const std::uint64_t needed = std::uint64_t{size_} + count + 1;
  const std::uint64_t wanted = needed + static_cast<std::uint64_t>(growIncrement_);
  if (!reallocate(std::min(wanted, kMaxCapacity))) return false;
  if (growIncrement_ < capacity_ && growIncrement_ < kMaxIncrement) {
    growIncrement_ = std::min(capacity_ / 2, kMaxIncrement);
  }
  std::memmove(data_ + size_, inside ? data_ + offset : source, count);
  setSize(size_ + static_cast<std::uint32_t>(count));
  return true;
}

void StringBuffer::setSize(std::uint32_t size) noexcept {
  size_ = size;
  if (capacity_ != 0) data_[size_] = '\0';
}

bool StringBuffer::append(const char* text) {
  guard_.check();
  return text == nullptr || append(std::string_view(text));
}

bool StringBuffer::appendInt(std::int64_t value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return append(digits, static_cast<std::size_t>(end - digits));
}

bool StringBuffer::setString(const char* text) {
  return setString(text != nullptr ? std::string_view(text) : std::string_view());
}

bool StringBuffer::setString(std::string_view text) {
  guard_.check();
  const bool inside = !text.empty() &&
                      std::less_equal<>()(static_cast<const char*>(data_), text.data()) &&
                      std::less<>()(text.data(), static_cast<const char*>(data_ + capacity_));
  if (!inside) {
    clear();
    return append(text);
  }
  std::memmove(data_, text.data(), text.size());
  setSize(static_cast<std::uint32_t>(text.size()));
  return true;
}

bool StringBuffer::takeBytes(DataBuffer& bytes) {
  guard_.check();
  if (bytes.isBorrowed() || bytes.getSize() >= kMaxCapacity) return false;
  const std::uint64_t exact = std::uint64_t{bytes.size_} + 1;
  const bool wasteful = bytes.capacity_ - bytes.size_ > bytes.size_ / 4 + kFirstCapacity;
  const bool fits = bytes.capacity_ >= exact && bytes.capacity_ <= kMaxCapacity;
  if ((!fits || wasteful) && !bytes.reallocate(exact) && !fits) return false;
  release();
  data_ = reinterpret_cast<char*>(std::exchange(bytes.data_, nullptr));
  capacity_ = static_cast<std::int32_t>(std::exchange(bytes.capacity_, 0U));
  setSize(std::exchange(bytes.size_, 0U));
  return true;
}

bool StringBuffer::reserve(std::size_t extra) {
  guard_.check();
  if (extra < room()) return true;
  if (extra >= kMaxCapacity - size_) return false;
  return reallocate(std::uint64_t{size_} + extra + 1);
}

char* StringBuffer::prepare(std::size_t extra) {
  return reserve(extra) ? data_ + size_ : nullptr;
}

void StringBuffer::commit(std::size_t written) {
  guard_.check();
  if (written >= room()) {
    if (written == 0) return;
    failFast();
  }
  setSize(size_ + static_cast<std::uint32_t>(written));
}

void StringBuffer::clear() {
  guard_.check();
  setSize(0);
}

void StringBuffer::secureClear() {
  guard_.check();
  // Called through a pointer that the optimiser cannot know, so that the overwriting stays.
  static void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
  if (size_ != 0) fill(data_, ' ', size_);
  setSize(0);
}

void StringBuffer::minimizeMemory() {
  guard_.check();
  if (static_cast<std::uint64_t>(capacity_) > std::uint64_t{size_} + 4) {
    reallocate(std::uint64_t{size_} + 1);
  }
}

void StringBuffer::shorten(std::uint32_t n) {
  guard_.check();
  setSize(size_ - std::min(n, size_));
}

void StringBuffer::truncate(std::uint32_t size) {
  guard_.check();
  setSize(std::min(size, size_));
}

char StringBuffer::charAt(std::int64_t i) const {
  guard_.check();
  return i >= 0 && i < static_cast<std::int64_t>(size_) ? data_[i] : '\0';
}

char StringBuffer::lastChar() const {
  return charAt(std::int64_t{size_} - 1);
}

}  // namespace zantrel

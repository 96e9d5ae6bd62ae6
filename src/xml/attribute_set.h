#pragma once
// The attributes of an element, in the order in which they were added.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/byte_block.h"

namespace zantrel {

/// A text of at most 2^31-1 bytes as a pointer and a size: a slice of somebody's longer text, or a
/// copy of its own, which the size's highest bit tells. Memory behind a text that is not empty can
/// be read for kSlack bytes, so that texts are searched and copied in blocks.
struct XmlSlice {
  static constexpr std::size_t kSlack = ByteBlock::kSize;
  static constexpr std::uint32_t kOwned = 0x80000000;

  static std::string_view view(const char* text, std::uint32_t size) {
    return {text, size & ~kOwned};
  }
  /// Becomes a copy of two texts, which may be parts of the old one.
  static void assign(const char*& text, std::uint32_t& size, std::string_view first,
                     std::string_view second = {});
  static void release(const char*& text, std::uint32_t& size) {
    if ((size & kOwned) != 0) delete[] text;
    text = nullptr;
    size = 0;
  }
};

/// As small as a pointer: most elements have none, and a node must stay small.
class AttributeSet final {
 public:
  struct Attribute {
    const char* name;
    const char* value;
    std::uint32_t nameSize;  // as XmlSlice keeps sizes
    std::uint32_t valueSize;

    std::string_view nameView() const { return XmlSlice::view(name, nameSize); }
    std::string_view valueView() const { return XmlSlice::view(value, valueSize); }
  };

  AttributeSet() = default;
  AttributeSet(const AttributeSet&) = delete;
  AttributeSet& operator=(const AttributeSet&) = delete;

  std::size_t count() const { return list_ != nullptr ? list_->count : 0; }
  const Attribute* begin() const { return list_ != nullptr ? list_->items() : nullptr; }
  const Attribute* end() const { return begin() + count(); }
  const Attribute& operator[](std::size_t i) const { return list_->items()[i]; }
  /// The first attribute of that name, or -1. Names are compared as bytes.
  std::ptrdiff_t find(std::string_view name) const;

  /// Adds one at the end, whether the name is there or not. Copies both texts.
  void add(std::string_view name, std::string_view value);
  void setValue(std::size_t i, std::string_view value);
  /// Adds to the end of a value.
  void appendValue(std::size_t i, std::string_view text);
  void remove(std::size_t i);
  /// Removes all of a name; false when there is none.
  bool removeAll(std::string_view name);
  void clear();
  void copyFrom(const AttributeSet& other);
  void swap(AttributeSet& other) noexcept;
  /// Copies what is somebody else's.
  void ownAll();

  // For the parser: a list in memory of somebody else, with the texts in the document's.
  static std::size_t listBytes(std::size_t count) {
    return sizeof(List) + count * sizeof(Attribute);
  }
  void borrow(void* memory, const Attribute* attributes, std::size_t count);

 private:
  struct alignas(Attribute) List {
    std::uint32_t count;
    std::uint32_t capacity;  // 0 when the memory is somebody else's
    Attribute* items() { return reinterpret_cast<Attribute*>(this + 1); }
    const Attribute* items() const { return reinterpret_cast<const Attribute*>(this + 1); }
  };

  void makeRoom();

  List* list_ = nullptr;
};

}  // namespace zantrel

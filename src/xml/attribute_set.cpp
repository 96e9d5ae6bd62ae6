#include "xml/attribute_set.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace zantrel {

namespace {

// Room for a text: up to an eighth more than it needs, so that one to which little pieces are added
// is not copied each time. The same for all sizes up to it, so that it need not be kept.
std::size_t roomFor(std::size_t size) {
  const std::size_t step = std::bit_floor(size | 16) / 8;
  return (size + step - 1) / step * step;
}

}  // namespace

void XmlSlice::assign(const char*& text, std::uint32_t& size, std::string_view first,
                      std::string_view second) {
  const std::size_t whole = first.size() + second.size();
  if (whole >= kOwned) throw std::bad_alloc();
  const bool isAppend = (size & kOwned) != 0 && first.data() == text &&
                        first.size() == view(text, size).size() && !second.empty();
  if (isAppend && whole <= roomFor(first.size())) {
    std::memcpy(const_cast<char*>(text) + first.size(), second.data(), second.size());
    size = static_cast<std::uint32_t>(whole) | kOwned;
    return;
  }
  std::unique_ptr<char[]> copy;
  if (whole != 0) copy.reset(new char[roomFor(whole) + kSlack]);
  std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), copy.get()));
  release(text, size);
  if (whole == 0) return;
  text = copy.release();
  size = static_cast<std::uint32_t>(whole) | kOwned;
}

std::ptrdiff_t AttributeSet::find(std::string_view name) const {
  for (const Attribute& attribute : *this)
    if (attribute.nameView() == name) return &attribute - begin();
  return -1;
}

// The list becomes the set's own, with room for one more.
void AttributeSet::makeRoom() {
  if (list_ != nullptr && list_->count < list_->capacity) return;
  const std::size_t count = this->count();
  const std::size_t capacity = std::max<std::size_t>(2, 2 * count);
  auto* const list = static_cast<List*>(::operator new(listBytes(capacity)));
  list->count = static_cast<std::uint32_t>(count);
  list->capacity = static_cast<std::uint32_t>(capacity);
  std::copy(begin(), end(), list->items());
  if (list_ != nullptr && list_->capacity != 0) ::operator delete(list_);
  list_ = list;
}

void AttributeSet::add(std::string_view name, std::string_view value) {
  struct Added : Attribute {  // released unless it gets into the list
    Added() : Attribute{} {}
    ~Added() {
      XmlSlice::release(this->name, nameSize);
      XmlSlice::release(this->value, valueSize);
    }
  } added;
  XmlSlice::assign(added.name, added.nameSize, name);
  XmlSlice::assign(added.value, added.valueSize, value);
  makeRoom();
  list_->items()[list_->count++] = std::exchange(static_cast<Attribute&>(added), Attribute{});
}

void AttributeSet::setValue(std::size_t i, std::string_view value) {
  Attribute& changed = list_->items()[i];
  XmlSlice::assign(changed.value, changed.valueSize, value);
}

void AttributeSet::appendValue(std::size_t i, std::string_view text) {
  Attribute& changed = list_->items()[i];
  XmlSlice::assign(changed.value, changed.valueSize, changed.valueView(), text);
}

void AttributeSet::remove(std::size_t i) {
  Attribute* const items = list_->items();
  XmlSlice::release(items[i].name, items[i].nameSize);
  XmlSlice::release(items[i].value, items[i].valueSize);
  std::copy(items + i + 1, items + list_->count, items + i);
  --list_->count;
}

bool AttributeSet::removeAll(std::string_view name) {
  if (find(name) < 0) return false;
  Attribute* kept = list_->items();
  for (Attribute* item = kept; item != end(); ++item) {
    if (item->nameView() != name) {
      *kept++ = *item;
      continue;
    }
    XmlSlice::release(item->name, item->nameSize);
    XmlSlice::release(item->value, item->valueSize);
  }
  list_->count = static_cast<std::uint32_t>(kept - list_->items());
  return true;
}

void AttributeSet::clear() {
  if (list_ == nullptr) return;
  for (Attribute* item = list_->items(); item != end(); ++item) {
    XmlSlice::release(item->name, item->nameSize);
    XmlSlice::release(item->value, item->valueSize);
  }
  if (list_->capacity != 0) ::operator delete(list_);
  list_ = nullptr;
}

void AttributeSet::copyFrom(const AttributeSet& other) {
  if (&other == this) return;
  clear();
  for (const Attribute& attribute : other) add(attribute.nameView(), attribute.valueView());
}

void AttributeSet::swap(AttributeSet& other) noexcept {
  std::swap(list_, other.list_);
}

void AttributeSet::ownAll() {
  if (list_ == nullptr) return;
  if (list_->capacity == 0) makeRoom();
  for (Attribute* item = list_->items(); item != end(); ++item) {
    XmlSlice::assign(item->name, item->nameSize, item->nameView());
    XmlSlice::assign(item->value, item->valueSize, item->valueView());
  }
}

void AttributeSet::borrow(void* memory, const Attribute* attributes, std::size_t count) {
  list_ = static_cast<List*>(memory);
  list_->count = static_cast<std::uint32_t>(count);
  list_->capacity = 0;
  std::memcpy(static_cast<void*>(list_->items()), attributes, count * sizeof(Attribute));
}

}  // namespace zantrel

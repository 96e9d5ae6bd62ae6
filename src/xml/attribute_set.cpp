#include "xml/attribute_set.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace zantrel {

void XmlSlice::assign(const char*& text, std::uint32_t& size, std::string_view first,
                      std::string_view second) {
  const std::size_t whole = first.size() + second.size();
  if (whole >= kOwned) throw std::bad_alloc();
  std::unique_ptr<char[]> copy;
  if (whole != 0) copy.reset(new char[whole + kSlack]);
  if (!first.empty()) std::memcpy(copy.get(), first.data(), first.size());
  if (!second.empty()) std::memcpy(copy.get() + first.size(), second.data(), second.size());
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

void AttributeSet::borrow(void* memory, const Attribute* attributes, std::size_t count) {
  list_ = static_cast<List*>(memory);
  list_->count = static_cast<std::uint32_t>(count);
  list_->capacity = 0;
  std::memcpy(static_cast<void*>(list_->items()), attributes, count * sizeof(Attribute));
}

}  // namespace zantrel

#include "xml/tree_node.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

#include "xml/xml_store.h"

namespace zantrel {

namespace {

// Two places before the first child of a list that is the node's own tell of the list: how many
// places lie before these, left by children that went from the front, and how many children there
// is room for.
constexpr std::size_t kHead = 2;

std::size_t numberIn(TreeNode* const& place) {
  return reinterpret_cast<std::uintptr_t>(place);
}
std::size_t leftBefore(TreeNode* const* list) {
  return numberIn(list[-2]);
}
std::size_t roomOf(TreeNode* const* list) {
  return numberIn(list[-1]);
}
void setHead(TreeNode** list, std::size_t before, std::size_t room) {
  list[-2] = reinterpret_cast<TreeNode*>(before);
  list[-1] = reinterpret_cast<TreeNode*>(room);
}

TreeNode** newList(std::size_t room) {
  auto** const list = new TreeNode*[room + kHead] + kHead;
  setHead(list, 0, room);
  return list;
}

void deleteList(TreeNode** list) {
  delete[](list - kHead - leftBefore(list));
}

}  // namespace

void TreeNode::releaseOwned() {
  XmlSlice::release(tag_, tagSize_);
  XmlSlice::release(content_, contentSize_);
  attributes_.clear();
  if ((flags_ & kOwnChildren) != 0) deleteList(children_);
  children_ = nullptr;
  childCount_ = 0;
  flags_ = 0;
}

void TreeNode::set(const char*& text, std::uint32_t& size, std::string_view first,
                   std::string_view second) {
  XmlArena::noteOwner(this);
  XmlSlice::assign(text, size, first, second);
}

AttributeSet& TreeNode::editAttributes() {
  XmlArena::noteOwner(this);
  return attributes_;
}

const TreeNode* TreeNode::root() const {
  const TreeNode* node = this;
  while (const TreeNode* above = node->parent()) node = above;
  return node;
}

TreeInfo* TreeNode::tree() const {
  const TreeNode* const top = root();
  return top->isRoot() ? static_cast<TreeInfo*>(top->above_) : nullptr;
}

// Siblings that came or went have moved a node by a few places at most, as a rule.
std::size_t TreeNode::findIndex(const TreeNode& above) const {
  const std::size_t count = above.childCount_;
  const std::size_t guess = std::min<std::size_t>(index_, count - 1);
  for (std::size_t away = 0;; ++away) {
    if (guess + away < count && above.list()[guess + away] == this)
      index_ = static_cast<std::uint32_t>(guess + away);
    else if (away <= guess && above.list()[guess - away] == this)
      index_ = static_cast<std::uint32_t>(guess - away);
    else
      continue;
    return index_;
  }
}

TreeNode* TreeNode::next(const TreeNode* top) const {
  return childCount_ != 0 ? child(0) : nextBeside(top);
}

TreeNode* TreeNode::nextBeside(const TreeNode* top) const {
  for (const TreeNode* node = this; node != nullptr && node != top; node = node->parent())
    if (TreeNode* const sibling = node->nextSibling()) return sibling;
  return nullptr;
}

// They become a list of the node's own.
void TreeNode::moveChildren(std::size_t room) {
  XmlArena::noteOwner(this);
  TreeNode** const list = newList(room);
  std::copy_n(this->list(), childCount_, list);
  if ((flags_ & kOwnChildren) != 0) deleteList(children_);
  children_ = list;
  flags_ = static_cast<std::uint8_t>((flags_ | kOwnChildren) & ~kOnlyChild);
}

// With half as many places to spare at least, also for children that come at the end while others
// go from the front. Lists of the parser have none.
void TreeNode::makeRoomForChild() {
  if ((flags_ & kOwnChildren) != 0 && childCount_ < roomOf(children_)) return;
  if (childCount_ >= 0x40000000) throw std::bad_alloc();
  moveChildren(std::bit_ceil(childCount_ + childCount_ / 2 + 2U));
}

void TreeNode::insertChild(std::size_t at, TreeNode* child) {
  makeRoomForChild();
  TreeNode** const list = children_;  // the node's own now
  std::copy_backward(list + at, list + childCount_, list + childCount_ + 1);
  list[at] = child;
  ++childCount_;
  child->above_ = this;
  child->index_ = static_cast<std::uint32_t>(at);
}

void TreeNode::dropFirstPlace() {
  if ((flags_ & kOnlyChild) != 0) {
    flags_ = static_cast<std::uint8_t>(flags_ & ~kOnlyChild);
    children_ = nullptr;
    return;
  }
  ++children_;
  if ((flags_ & kOwnChildren) != 0)
    setHead(children_, leftBefore(children_ - 1) + 1, roomOf(children_ - 1) - 1);
}

// Those on the shorter side move.
TreeNode* TreeNode::takeChild(std::size_t i) {
  TreeNode** const list = this->list();
  TreeNode* const taken = list[i];
  if (i < childCount_ - i) {
    std::copy_backward(list, list + i, list + i + 1);
    dropFirstPlace();
  } else {
    std::copy(list + i + 1, list + childCount_, list + i);
  }
  --childCount_;
  taken->above_ = nullptr;
  return taken;
}

// What the node holds is no longer the arena's, so that a node of another one can have it.
void TreeNode::ownData() {
  setTag(tag());
  setContent(content());
  attributes_.ownAll();
}

void TreeNode::ownChildren() {
  if ((flags_ & (kOwnChildren | kOnlyChild)) != 0 || childCount_ == 0) return;
  moveChildren(childCount_);
}

void TreeNode::swapFlags(TreeNode& other, unsigned which) {
  const unsigned difference = (flags_ ^ other.flags_) & which;
  flags_ = static_cast<std::uint8_t>(flags_ ^ difference);
  other.flags_ = static_cast<std::uint8_t>(other.flags_ ^ difference);
}

void TreeNode::swapData(TreeNode& other) {
  if (this == &other) return;
  XmlArena::noteOwner(this);
  XmlArena::noteOwner(&other);
  if (&XmlArena::of(this) != &XmlArena::of(&other)) {
    ownData();
    other.ownData();
  }
  swapFlags(other, kCdata);
  std::swap(tag_, other.tag_);
  std::swap(tagSize_, other.tagSize_);
  std::swap(content_, other.content_);
  std::swap(contentSize_, other.contentSize_);
  attributes_.swap(other.attributes_);
}

void TreeNode::swapContent(TreeNode& other) {
  if (this == &other) return;
  if (&XmlArena::of(this) != &XmlArena::of(&other)) {
    ownChildren();
    other.ownChildren();
  }
  swapData(other);
  swapFlags(other, kOwnChildren | kOnlyChild);
  std::swap(children_, other.children_);
  std::swap(childCount_, other.childCount_);
  for (TreeNode* node : {this, &other})
    for (std::size_t i = 0; i < node->childCount_; ++i) node->child(i)->above_ = node;
}

}  // namespace zantrel

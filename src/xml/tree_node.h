#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/attribute_set.h"

namespace zantrel {

struct TreeInfo;

/// One element. All text is UTF-8, with references decoded. Nodes are made and ended by their store
/// (xml_store.h), which also is where handles count; functions here never fail but for memory, by
/// std::bad_alloc, and none recurses.
class TreeNode final {
 public:
  TreeNode(const TreeNode&) = delete;
  TreeNode& operator=(const TreeNode&) = delete;

  /// False once the node has been ended: whoever still has it must leave it alone.
  bool isAlive() const { return validity_ == kAlive; }

  std::string_view tag() const { return XmlSlice::view(tag_, tagSize_); }
  std::string_view content() const { return XmlSlice::view(content_, contentSize_); }
  void setTag(std::string_view tag) { set(tag_, tagSize_, tag); }
  void setContent(std::string_view content) { set(content_, contentSize_, content); }
  void appendContent(std::string_view more) { set(content_, contentSize_, content(), more); }
  /// Whether the content is written as a CDATA section.
  bool isCdata() const { return (flags_ & kCdata) != 0; }
  void setCdata(bool on) {
    flags_ = static_cast<std::uint8_t>(on ? flags_ | kCdata : flags_ & ~kCdata);
  }
  /// To be changed.
  AttributeSet& editAttributes();
  const AttributeSet& attributes() const { return attributes_; }

  std::size_t numChildren() const { return childCount_; }
  TreeNode* child(std::size_t i) const { return list()[i]; }
  /// The same; the child then knows its index, although siblings before it may have gone.
  TreeNode* placedChild(std::size_t i) const {
    child(i)->index_ = static_cast<std::uint32_t>(i);
    return child(i);
  }
  bool isRoot() const { return (flags_ & kRoot) != 0; }
  TreeNode* parent() const { return isRoot() ? nullptr : static_cast<TreeNode*>(above_); }
  /// Of the tree that the node is in; null for a node in none. Climbs to the root.
  TreeInfo* tree() const;
  const TreeNode* root() const;
  /// Place among the siblings; 0 for a root. In constant time unless siblings were inserted or
  /// removed before it since the last call.
  std::size_t index() const {
    const TreeNode* const above = parent();
    if (above == nullptr) return 0;
    const bool isThere = index_ < above->childCount_ && above->child(index_) == this;
    return isThere ? index_ : findIndex(*above);
  }
  /// The sibling behind this one, or null.
  TreeNode* nextSibling() const {
    const TreeNode* const above = parent();
    const std::size_t beside = index() + 1;
    if (above == nullptr || beside >= above->childCount_) return nullptr;
    TreeNode* const sibling = above->child(beside);
    sibling->index_ = static_cast<std::uint32_t>(beside);
    return sibling;
  }
  /// The next node of the subtree under `top` in document order, or null.
  TreeNode* next(const TreeNode* top) const;
  /// The same, leaving out what is below this node.
  TreeNode* nextBeside(const TreeNode* top) const;

  /// A node of the same store that is in no tree becomes child number `at`.
  void insertChild(std::size_t at, TreeNode* child);
  void appendChild(TreeNode* child) { insertChild(childCount_, child); }
  /// Gets memory for another child, so that the next insertChild() cannot fail.
  void makeRoomForChild();
  /// Takes a child out; it is then in no tree.
  TreeNode* takeChild(std::size_t i);
  /// Exchanges tag, content and attributes with any node of the same store.
  void swapData(TreeNode& other);
  /// Exchanges these and the children with a node of the same store that is neither
  /// above nor below this one.
  void swapContent(TreeNode& other);
  /// The children themselves, to be reordered; noteOrder() then tells them their places.
  TreeNode** children() { return list(); }
  void noteOrder() {
    for (std::uint32_t i = 0; i < childCount_; ++i) child(i)->index_ = i;
  }

  // For the parser: parts that live as long as the arena of the node.
  void borrowTag(const char* text, std::size_t size) {
    tag_ = text;
    tagSize_ = static_cast<std::uint32_t>(size);
  }
  void borrowContent(const char* text, std::size_t size) {
    content_ = text;
    contentSize_ = static_cast<std::uint32_t>(size);
  }
  void borrowAttributes(void* memory, const AttributeSet::Attribute* attributes,
                        std::size_t count) {
    attributes_.borrow(memory, attributes, count);
  }
  void borrowChildren(TreeNode** list, std::size_t count) {
    children_ = list;
    childCount_ = static_cast<std::uint32_t>(count);
  }
  void borrowOnlyChild(TreeNode* child) {
    onlyChild_ = child;
    childCount_ = 1;
    flags_ |= kOnlyChild;
  }
  /// For a node that the parent's list is going to have at that place.
  void placeUnder(TreeNode* parent, std::size_t index) {
    above_ = parent;
    index_ = static_cast<std::uint32_t>(index);
  }

 private:
  friend class XmlArena;
  friend class XmlStore;

  static constexpr std::uint8_t kAlive = 206;
  static constexpr std::uint8_t kDead = 0;
  enum Flags : std::uint8_t { kCdata = 1, kRoot = 2, kOwnChildren = 4, kOnlyChild = 8 };

  TreeNode() = default;
  ~TreeNode() = default;  // the arena calls releaseOwned() instead
  void releaseOwned();
  void set(const char*& text, std::uint32_t& size, std::string_view first,
           std::string_view second = {});
  // An only child of the parser's is a list in the node itself.
  TreeNode** list() { return (flags_ & kOnlyChild) != 0 ? &onlyChild_ : children_; }
  TreeNode* const* list() const { return (flags_ & kOnlyChild) != 0 ? &onlyChild_ : children_; }
  void moveChildren(std::size_t room);
  void dropFirstPlace();
  void ownData();
  void ownChildren();
  void swapFlags(TreeNode& other, unsigned which);
  std::size_t findIndex(const TreeNode& above) const;

  std::uint8_t validity_ = kAlive;
  std::uint8_t flags_ = 0;
  std::uint32_t handles_ = 0;
  mutable std::uint32_t index_ = 0;  // where the node was among its siblings when last looked for
  std::uint32_t childCount_ = 0;
  const char* tag_ = nullptr;
  const char* content_ = nullptr;
  std::uint32_t tagSize_ = 0;
  std::uint32_t contentSize_ = 0;
  union {
    TreeNode** children_ = nullptr;
    TreeNode* onlyChild_;
  };
  void* above_ = nullptr;  // the parent; the TreeInfo of a root; the next free node of a dead one
  AttributeSet attributes_;
};

static_assert(sizeof(void*) != 8 || sizeof(TreeNode) == 64, "a cache line, shared with no other");

}  // namespace zantrel

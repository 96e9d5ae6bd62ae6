#pragma once
// The children of a node in another order.

#include <string_view>

namespace zantrel {

class TreeNode;

/// What children are sorted by: a key that each of them has, or that one of its own children has.
struct XmlSortKey {
  enum class Of { Tag, Content, Attribute };

  Of of = Of::Tag;
  std::string_view attribute{};  ///< name, where the key is one's value
  /// Where it is not empty the children are records: the key is that of a record's first child with
  /// this tag.
  std::string_view recordTag{};
  /// Keys are compared as whole numbers, read from the start of their text: white space, a sign,
  /// digits; whatever follows does not matter. They may have 64 bits; beyond that all are equal.
  bool numeric = false;
  bool ascending = true;
  /// Keys that differ in upper and lower case only, by Unicode, are equal. Of texts only.
  bool ignoreCase = false;
};

/// Sorts the children, not what is below them. Texts are in the order of their characters' numbers
/// in Unicode. A child without the key (no such attribute or child; with numbers, no digits too)
/// is smaller than any with one. Those with equal keys stay in the order that they had, descending
/// too. Takes time n log n.
void sortChildren(TreeNode& parent, const XmlSortKey& key);

}  // namespace zantrel

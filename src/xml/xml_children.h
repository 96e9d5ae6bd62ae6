#pragma once
// Children of an element, for methods that are told which.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "xml/xml_store.h"

namespace zantrel {

class LogBase;

/// Whether an index names one of so many; logged when it does not.
bool isIndex(std::int32_t index, std::size_t count, LogBase& log);
/// Child number `index`; null with a log entry when there is none.
TreeNode* childNumber(const TreeNode& node, std::int32_t index, LogBase& log);
/// Child number `n` of those with a tag; null with a log entry when there is none.
TreeNode* childTagged(const TreeNode& node, std::string_view tag, std::int32_t n, LogBase& log);

/// Whether a node is `top` or below it.
bool isWithin(const TreeNode* node, const TreeNode& top);

/// Removes the children that pass a test; false when none does. The others move up in one go,
/// however many there are.
template <class Test>
bool removeChildrenIf(TreeNode& node, XmlStore& store, const Test& test) {
  TreeNode** const begin = node.children();
  TreeNode** const end = begin + node.numChildren();
  TreeNode** const kept = std::stable_partition(begin, end, std::not_fn(test));
  if (kept == end) return false;
  node.noteOrder();
  for (std::ptrdiff_t left = end - kept; left != 0; --left)
    store.remove(node.child(node.numChildren() - 1));
  return true;
}

void removeAllChildren(TreeNode& node, XmlStore& store);

}  // namespace zantrel

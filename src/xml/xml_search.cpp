#include "xml/xml_search.h"

#include <algorithm>

#include "xml/tree_node.h"

namespace zantrel {
namespace {

constexpr std::string_view kAny = "*";

WildcardPattern::Case caseOf(const XmlCriteria& criteria) {
  return criteria.caseSensitive ? WildcardPattern::Case::Sensitive : WildcardPattern::Case::Ignore;
}

std::string_view tagAsked(std::string_view tag) {
  return tag == kAny ? std::string_view() : tag;
}

bool hasTag(const TreeNode& node, std::string_view asked) {
  return asked.empty() || node.tag() == asked;
}

bool hasMatchingChild(const TreeNode& node, const XmlMatcher& child) {
  for (std::size_t i = 0; i < node.numChildren(); ++i)
    if (child.matches(*node.child(i))) return true;
  return false;
}

}  // namespace

XmlMatcher::XmlMatcher(const XmlCriteria& criteria)
    : tag_(tagAsked(criteria.tag)),
      attribute_(criteria.attribute),
      value_(criteria.value, caseOf(criteria)),
      content_(criteria.content, caseOf(criteria)) {}

bool XmlMatcher::matches(const TreeNode& node) const {
  if (!hasTag(node, tag_)) return false;
  if (!attribute_.empty() && !hasAttribute(node)) return false;
  return content_.matchesAll() || content_.matches(node.content());
}

bool XmlMatcher::hasAttribute(const TreeNode& node) const {
  const AttributeSet& attributes = node.attributes();
  return std::any_of(attributes.begin(), attributes.end(),
                     [this](const AttributeSet::Attribute& one) {
                       return one.nameView() == attribute_ && value_.matches(one.valueView());
                     });
}

TreeNode* findNext(TreeNode* top, const TreeNode* after, const XmlMatcher& matcher) {
  TreeNode* node = after == nullptr ? top : after->next(top);
  while (node != nullptr && !matcher.matches(*node)) node = node->next(top);
  return node;
}

TreeNode* findNextRecord(const TreeNode* record, const XmlMatcher& child) {
  const TreeNode* const parent = record->parent();
  if (parent == nullptr) return nullptr;
  for (std::size_t i = record->index() + 1; i < parent->numChildren(); ++i) {
    TreeNode* const sibling = parent->child(i);
    if (hasMatchingChild(*sibling, child)) return sibling;
  }
  return nullptr;
}

TreeNode* findChild(const TreeNode& parent, std::string_view tag, std::size_t which) {
  const std::string_view asked = tagAsked(tag);
  if (asked.empty()) return which < parent.numChildren() ? parent.placedChild(which) : nullptr;
  for (std::size_t i = 0; i < parent.numChildren(); ++i) {
    TreeNode* const child = parent.child(i);
    if (child->tag() == asked && which-- == 0) return parent.placedChild(i);
  }
  return nullptr;
}

}  // namespace zantrel

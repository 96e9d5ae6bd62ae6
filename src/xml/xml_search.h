#pragma once
// Finding nodes by what they hold.

#include <cstddef>
#include <string_view>

#include "core/wildcard_pattern.h"

namespace zantrel {

class TreeNode;

/// What a node must have to be found: all that is given here.
///
/// Tags and names of attributes are compared as they stand, upper and lower case being different.
/// Values and content are compared to patterns, as a whole, in which "*" stands for any characters
/// or none: "abc" finds "abc" alone, "*abc*" whatever holds it, "*" everything, and the empty
/// pattern what is empty. Whether case matters is said for these patterns only; where it does not,
/// letters are equal that differ by case in Unicode.
struct XmlCriteria {
  std::string_view tag{};          ///< empty or "*": any
  std::string_view attribute{};    ///< a name; where it is empty, none is asked for
  std::string_view value = "*";    ///< pattern of an attribute of that name, which must be there
  std::string_view content = "*";  ///< pattern
  bool caseSensitive = true;
};

/// Criteria made ready for many nodes. The texts for tag and attribute must outlive it.
class XmlMatcher final {
 public:
  explicit XmlMatcher(const XmlCriteria& criteria);
  bool matches(const TreeNode& node) const;

 private:
  bool hasAttribute(const TreeNode& node) const;

  std::string_view tag_;
  std::string_view attribute_;
  WildcardPattern value_;
  WildcardPattern content_;
};

/// The next match in the subtree under `top`, in document order: a node comes before its children,
/// and these before its next sibling. The search begins with `top` itself, which may be the match,
/// when `after` is null, and else behind that node: with its first child, so that `top` as `after`
/// leaves out only `top`. `after` must be in the subtree. Null when there is no further match.
TreeNode* findNext(TreeNode* top, const TreeNode* after, const XmlMatcher& matcher);

/// The next of the siblings behind `record` that has a child with this tag (empty or "*" for any)
/// and with content that matches, or null. `record` itself is not looked at.
TreeNode* findNextRecord(const TreeNode* record, const XmlMatcher& child);

/// Child number `which`, from 0, of those that have the tag (empty or "*" for any), or null.
TreeNode* findChild(const TreeNode& parent, std::string_view tag, std::size_t which = 0);

}  // namespace zantrel

#pragma once
// Paths that lead from one node to another, to its content or to an attribute.

#include <string_view>

namespace zantrel {

class LogBase;
class TreeNode;

/// Where a path leads.
struct XmlPathTarget {
  enum class Kind {
    Content,    ///< the content of the node
    Attribute,  ///< the value of one of its attributes
    Node,       ///< the node itself
  };
  Kind kind = Kind::Content;
  TreeNode* node = nullptr;
  std::string_view text{};  ///< content or value
};

/// Follows a path from `start`. A path is steps with "|" between them:
///
///   tag      the first child that has this tag, compared as it stands
///   tag[n]   child number n, from 0, of those that have the tag
///   [n]      child number n, whatever its tag
///   ..       the parent
///
/// The last step may instead say what is asked of the node reached so far:
///
///   (name)   the value of its attribute of this name
///   *        its content, which is also what a path gives without such a step
///   $        the node itself
///
/// So "book[2]|title" and "book[2]|title|*" give the content of the title of the third book,
/// "book|(id)" gives an attribute of the first one, and "..|$" the parent. An empty path gives the
/// content of `start`. A tag with "|" or "[" in it, or one that begins with "(", can be reached by
/// its number only.
///
/// False when there is no such node or attribute, or when the path is malformed; the log names the
/// step, and its number from 1.
bool followXmlPath(TreeNode* start, std::string_view path, XmlPathTarget& target, LogBase& log);

}  // namespace zantrel

#pragma once

#include <cstdint>
#include <vector>

#include "core/string_buffer.h"

namespace zantrel {

class TreeNode;

/// What the nodes of one tree share. Belongs to the root and goes with it.
struct TreeInfo {
  TreeNode* root = nullptr;
  /// Handles on nodes of the tree.
  std::uint32_t handles = 0;
  /// Tells trees apart; 0 until somebody has asked.
  std::int32_t id = 0;
  /// Its attributes are version, encoding and standalone, as far as they are given; null when the
  /// document has no declaration.
  TreeNode* declaration = nullptr;
  /// Whether writing says standalone="yes".
  bool standalone = false;
  /// The other processing instructions: target as tag, what looks like attributes as attributes.
  std::vector<TreeNode*> processingInstructions;
  /// Whole DOCTYPE declarations and style sheet instructions, a line each.
  StringBuffer docType = StringBuffer::withCapacity(0);
  StringBuffer styleSheet = StringBuffer::withCapacity(0);
};

}  // namespace zantrel

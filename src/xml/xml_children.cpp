#include "xml/xml_children.h"

#include "core/log_base.h"
#include "core/xstring.h"
#include "xml/xml_search.h"

namespace zantrel {

bool isIndex(std::int32_t index, std::size_t count, LogBase& log) {
  if (index >= 0 && static_cast<std::size_t>(index) < count) return true;
  log.logError("The index is out of range.");
  log.logDataLong("index", index);
  log.logData64("count", static_cast<std::int64_t>(count));
  return false;
}

TreeNode* childNumber(const TreeNode& node, std::int32_t index, LogBase& log) {
  return isIndex(index, node.numChildren(), log) ? node.placedChild(static_cast<std::size_t>(index))
                                                 : nullptr;
}

TreeNode* childTagged(const TreeNode& node, std::string_view tag, std::int32_t n, LogBase& log) {
  TreeNode* const found = n >= 0 ? findChild(node, tag, static_cast<std::size_t>(n)) : nullptr;
  if (found == nullptr) {
    log.logError("The element has no such child.");
    log.logDataStr("tag", XString(tag));
    if (n != 0) log.logDataLong("index", n);
  }
  return found;
}

bool isWithin(const TreeNode* node, const TreeNode& top) {
  while (node != nullptr && node != &top) node = node->parent();
  return node != nullptr;
}

void removeAllChildren(TreeNode& node, XmlStore& store) {
  while (node.numChildren() != 0) store.remove(node.placedChild(node.numChildren() - 1));
}

}  // namespace zantrel

// Edits of whole elements and trees.

#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"
#include "xml/xml_declaration.h"

namespace zantrel {

bool ClsXml::Clear() {
  return on("Clear", [&](TreeNode& node, MethodCall&) {
    XmlStore& store = place_.store();
    removeAllChildren(node, store);
    node.setTag("");
    node.setContent("");
    node.setCdata(false);
    node.editAttributes().clear();
    if (!node.isRoot()) return true;
    clearProlog(store, *place_.tree());
    makeDeclaration(store, *place_.tree());
    return true;
  });
}

bool ClsXml::Copy(ClsXml& from) {
  return onTwo("Copy", from, [&](TreeNode& node, TreeNode& source, MethodCall&) {
    if (&node == &source) return true;
    XmlStore& store = place_.store();
    TreeNode* const copy = store.copy(&source);  // first, as the source may be below the node
    if (node.isRoot() && source.isRoot()) copyProlog(store, *from.place_.tree(), *place_.tree());
    removeAllChildren(node, store);
    node.swapContent(*copy);
    store.end(copy);
    return true;
  });
}

bool ClsXml::SwapNode(ClsXml& other) {
  return onTwo("SwapNode", other, [&](TreeNode& node, TreeNode& second, MethodCall&) {
    XmlHandle::join(place_, other.place_);
    node.swapData(second);
    return true;
  });
}

bool ClsXml::SwapTree(ClsXml& other) {
  return onTwo("SwapTree", other, [&](TreeNode& node, TreeNode& second, MethodCall& c) {
    if (&node != &second && (isWithin(&node, second) || isWithin(&second, node))) {
      c.log().logError("An element cannot change places with one that is above or below it.");
      return false;
    }
    XmlHandle::join(place_, other.place_);
    place_.store().swap(&node, &second);
    return true;
  });
}

bool ClsXml::RemoveFromTree() {
  return on("RemoveFromTree", [&](TreeNode& node, MethodCall& c) {
    if (node.isRoot()) {
      c.log().logError("The element is the root of its tree.");
      return false;
    }
    place_.store().detach(&node);
    return true;
  });
}

}  // namespace zantrel

// Children that come and go.

#include <string>
#include <utility>

#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"
#include "xml/xml_search.h"

namespace zantrel {

namespace {

TreeNode* addChild(TreeNode& node, XmlStore& store, std::string_view tag,
                   std::string_view content) {
  struct Child {  // ended unless it gets into the tree
    XmlStore& store;
    TreeNode* node;
    ~Child() {
      if (node != nullptr) store.end(node);
    }
  } child{store, store.newNode()};
  child.node->setTag(tag);
  child.node->setContent(content);
  node.appendChild(child.node);
  return std::exchange(child.node, nullptr);
}

}  // namespace

bool ClsXml::NewChildX(std::string_view tag, std::string_view content, ClsXml& out) {
  return give("NewChild", out, [&](TreeNode& node, LogBase&) {
    return addChild(node, place_.store(), tag, content);
  });
}

bool ClsXml::NewChild2(std::string_view tag, std::string_view content) {
  return on("NewChild2", [&](TreeNode& node, MethodCall&) {
    return addChild(node, place_.store(), tag, content) != nullptr;
  });
}

bool ClsXml::NewChildInt2(std::string_view tag, std::int32_t value) {
  return on("NewChildInt2", [&](TreeNode& node, MethodCall&) {
    return addChild(node, place_.store(), tag, std::to_string(value)) != nullptr;
  });
}

bool ClsXml::FindOrAddNewChildX(std::string_view tag, ClsXml& out) {
  return give("FindOrAddNewChild", out, [&](TreeNode& node, LogBase&) {
    TreeNode* const found = findChild(node, tag);
    return found != nullptr ? found : addChild(node, place_.store(), tag, "");
  });
}

bool ClsXml::updateChild(const char* method, std::string_view tag, std::string_view content) {
  return on(method, [&](TreeNode& node, MethodCall&) {
    if (TreeNode* const found = findChild(node, tag))
      found->setContent(content);
    else
      addChild(node, place_.store(), tag, content);
    return true;
  });
}

bool ClsXml::UpdateChildContent(std::string_view tag, std::string_view content) {
  return updateChild("UpdateChildContent", tag, content);
}

bool ClsXml::UpdateChildContentInt(std::string_view tag, std::int32_t value) {
  return updateChild("UpdateChildContentInt", tag, std::to_string(value));
}

bool ClsXml::AddToChildContent(std::string_view tag, std::int32_t amount) {
  return on("AddToChildContent", [&](TreeNode& node, MethodCall&) {
    TreeNode* const found = findChild(node, tag);
    const std::int64_t before = found != nullptr ? intOf(found->content()) : 0;
    const std::string sum = std::to_string(before + amount);
    if (found != nullptr)
      found->setContent(sum);
    else
      addChild(node, place_.store(), tag, sum);
    return true;
  });
}

bool ClsXml::AddChildTree(ClsXml& tree) {
  return onTwo("AddChildTree", tree, [&](TreeNode& node, TreeNode& added, MethodCall& c) {
    // Trees that are not the same need no climb, which would make towers slow to build.
    if (place_.tree() == tree.place_.tree() && isWithin(&node, added)) {
      c.log().logError("An element cannot become a child of itself or of what is below it.");
      return false;
    }
    XmlHandle::moveNode(tree.place_, place_);
    return true;
  });
}

bool ClsXml::ExtractChildByIndexX(std::int32_t index, ClsXml& out) {
  return extract("ExtractChildByIndex", out,
                 [&](TreeNode& node, LogBase& log) { return childNumber(node, index, log); });
}

bool ClsXml::ExtractChildByNameX(std::string_view tag, ClsXml& out) {
  return extract("ExtractChildByName", out,
                 [&](TreeNode& node, LogBase& log) { return childTagged(node, tag, 0, log); });
}

template <class Find>
bool ClsXml::extract(const char* name, ClsXml& out, const Find& find) {
  return give(name, out, [&](TreeNode& node, LogBase& log) {
    TreeNode* const found = find(node, log);
    if (found != nullptr) place_.store().detach(found);
    return found;
  });
}

template <class Test>
bool ClsXml::removeChildren(const char* name, const Test& test) {
  return on(name, [&](TreeNode& node, MethodCall& c) {
    if (removeChildrenIf(node, place_.store(), test)) return true;
    c.log().logError("The element has no such child.");
    return false;
  });
}

bool ClsXml::RemoveChild(std::string_view tag) {
  const XmlCriteria criteria{.tag = tag};
  const XmlMatcher matcher(criteria);
  return removeChildren("RemoveChild",
                        [&](const TreeNode* child) { return matcher.matches(*child); });
}

bool ClsXml::RemoveChildWithContent(std::string_view content) {
  return removeChildren("RemoveChildWithContent",
                        [&](const TreeNode* child) { return child->content() == content; });
}

bool ClsXml::RemoveChildByIndex(std::int32_t index) {
  return on("RemoveChildByIndex", [&](TreeNode& node, MethodCall& c) {
    TreeNode* const child = childNumber(node, index, c.log());
    if (child != nullptr) place_.store().remove(child);
    return child != nullptr;
  });
}

bool ClsXml::RemoveAllChildren() {
  return on("RemoveAllChildren", [&](TreeNode& node, MethodCall&) {
    removeAllChildren(node, place_.store());
    return true;
  });
}

}  // namespace zantrel

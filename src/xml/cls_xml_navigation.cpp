// From an element to those around it.

#include <atomic>

#include "xml/cls_xml_frame.h"
#include "xml/xml_path.h"

namespace zantrel {

namespace {

TreeNode* parentOf(TreeNode& node) {
  return node.parent();
}
TreeNode* firstOf(TreeNode& node) {
  return node.numChildren() != 0 ? node.placedChild(0) : nullptr;
}
TreeNode* lastOf(TreeNode& node) {
  return node.numChildren() != 0 ? node.placedChild(node.numChildren() - 1) : nullptr;
}
TreeNode* nextOf(TreeNode& node) {
  return node.nextSibling();
}
TreeNode* previousOf(TreeNode& node) {
  const TreeNode* const parent = node.parent();
  const std::size_t index = node.index();
  return parent != nullptr && index != 0 ? parent->placedChild(index - 1) : nullptr;
}

constexpr char kNoParent[] = "The element is the root of its tree.";
constexpr char kNoChild[] = "The element has no children.";
constexpr char kNoNext[] = "There is no sibling behind the element.";
constexpr char kNoPrevious[] = "There is no sibling before the element.";

}  // namespace

bool ClsXml::giveRelative(const char* name, ClsXml& out, TreeNode* (*find)(TreeNode&),
                          const char* error) {
  return give(name, out, [&](TreeNode& node, LogBase& log) {
    TreeNode* const found = find(node);
    return found != nullptr ? found : notFound(log, error);
  });
}

bool ClsXml::moveRelative(const char* name, TreeNode* (*find)(TreeNode&), const char* error) {
  return move(name, [&](TreeNode& node, LogBase& log) {
    TreeNode* const found = find(node);
    return found != nullptr ? found : notFound(log, error);
  });
}

bool ClsXml::GetRootX(ClsXml& out) {
  return give("GetRoot", out, [this](TreeNode&, LogBase&) { return place_.tree()->root; });
}

bool ClsXml::GetRoot2() {
  return move("GetRoot2", [this](TreeNode&, LogBase&) { return place_.tree()->root; });
}

bool ClsXml::GetSelfX(ClsXml& out) {
  return give("GetSelf", out, [](TreeNode& node, LogBase&) { return &node; });
}

bool ClsXml::GetParentX(ClsXml& out) {
  return giveRelative("GetParent", out, parentOf, kNoParent);
}

bool ClsXml::GetParent2() {
  return moveRelative("GetParent2", parentOf, kNoParent);
}

bool ClsXml::FirstChildX(ClsXml& out) {
  return giveRelative("FirstChild", out, firstOf, kNoChild);
}

bool ClsXml::FirstChild2() {
  return moveRelative("FirstChild2", firstOf, kNoChild);
}

bool ClsXml::LastChildX(ClsXml& out) {
  return giveRelative("LastChild", out, lastOf, kNoChild);
}

bool ClsXml::LastChild2() {
  return moveRelative("LastChild2", lastOf, kNoChild);
}

bool ClsXml::NextSiblingX(ClsXml& out) {
  return giveRelative("NextSibling", out, nextOf, kNoNext);
}

bool ClsXml::NextSibling2() {
  return moveRelative("NextSibling2", nextOf, kNoNext);
}

bool ClsXml::PreviousSiblingX(ClsXml& out) {
  return giveRelative("PreviousSibling", out, previousOf, kNoPrevious);
}

bool ClsXml::PreviousSibling2() {
  return moveRelative("PreviousSibling2", previousOf, kNoPrevious);
}

bool ClsXml::ZantrelPathX(std::string_view path, XString& out) {
  return on("ZantrelPath", [&](TreeNode& node, MethodCall& c) {
    XmlPathTarget target;
    if (!followXmlPath(&node, path, target, c.log())) return false;
    if (target.kind == XmlPathTarget::Kind::Node) place_.moveTo(target.node);
    out.setFromUtf8(target.text);
    return true;
  });
}

std::int32_t ClsXml::get_TreeId() {
  return property([this](TreeNode&) {
    static std::atomic<std::int32_t> last{0};
    TreeInfo& tree = *place_.tree();
    if (tree.id == 0) tree.id = ++last;
    return tree.id;
  });
}

}  // namespace zantrel

// XML edits through handles: sequences of them against a simple model of trees, which never frees
// anything. Handles must stay on their elements, and trees be what the model says.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "xml/cls_xml.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

struct Node {
  std::string tag{}, content{};
  std::map<std::string, std::string> attributes{};  // all edits put them in this order
  std::vector<Node*> children{};
  Node* parent = nullptr;
  bool declared = false;  // a root whose tree has a declaration

  const Node* root() const { return parent != nullptr ? parent->root() : this; }
  bool isWithin(const Node* top) const {
    return this == top || (parent != nullptr && parent->isWithin(top));
  }
  std::size_t index() const {
    const auto& all = parent->children;
    return static_cast<std::size_t>(std::find(all.begin(), all.end(), this) - all.begin());
  }
  void detach() {
    if (parent == nullptr) return;
    parent->children.erase(parent->children.begin() + static_cast<std::ptrdiff_t>(index()));
    parent = nullptr;
    declared = false;
  }
  void add(Node* child) {
    children.push_back(child);
    child->parent = this;
  }
  void detachAll() {
    while (!children.empty()) children.back()->detach();
  }
  std::string written(std::size_t depth = 0) const {
    const std::string indent(4 * std::min<std::size_t>(depth, 50), ' ');
    const std::string name = tag.empty() ? "nothing" : tag;
    std::string out = indent + "<" + name;
    for (const auto& [key, value] : attributes) out += " " + key + "=\"" + value + "\"";
    if (content.empty() && children.empty()) return out + " />\r\n";
    out += ">" + content;
    if (children.empty()) return out + "</" + name + ">\r\n";
    out += "\r\n";
    for (const Node* child : children) out += child->written(depth + 1);
    return out + indent + "</" + name + ">\r\n";
  }
};

struct Handle {
  ClsXml xml;
  Node* node = nullptr;
};

class Trial {
 public:
  Trial(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {
    for (Handle& handle : handles_) {
      handle.node = newNode("");
      handle.node->declared = true;
    }
  }

  void run() {
    constexpr std::size_t kMostNodes = 3000;
    for (int step = 0; at_ != end_ && nodes_.size() < kMostNodes; ++step) {
      edit();
      if (step % 8 == 0) compare();
    }
    compare();
  }

 private:
  unsigned next(unsigned below) { return at_ != end_ ? *at_++ % below : 0; }
  Handle& anyHandle() { return handles_[next(kHandles)]; }
  std::string name() { return std::string(1, static_cast<char>('a' + next(4))); }

  Node* newNode(const std::string& tag, const std::string& content = {}) {
    nodes_.push_back(std::make_unique<Node>());
    nodes_.back()->tag = tag;
    nodes_.back()->content = content;
    return nodes_.back().get();
  }
  Node* copy(const Node& from) {
    Node* const made = newNode(from.tag, from.content);
    made->attributes = from.attributes;
    for (const Node* child : from.children) made->add(copy(*child));
    return made;
  }

  void edit() {
    using Edit = void (Trial::*)();
    static constexpr Edit kEdits[] = {
        &Trial::newChild,      &Trial::move,         &Trial::give,      &Trial::addTree,
        &Trial::extract,       &Trial::removeAt,     &Trial::removeTag, &Trial::removeAll,
        &Trial::swapNodes,     &Trial::swapTrees,    &Trial::copyTree,  &Trial::removeFromTree,
        &Trial::changeContent, &Trial::setAttribute, &Trial::clear,     &Trial::sort,
        &Trial::load,          &Trial::zipAndUnzip};
    (this->*kEdits[next(std::size(kEdits))])();
  }

  void newChild() {
    Handle& handle = anyHandle();
    Handle& made = anyHandle();
    const std::string tag = name();
    Node* const child = newNode(tag, "x");
    handle.node->add(child);
    check(handle.xml.NewChildX(tag, "x", made.xml));
    made.node = child;
  }

  /// Where one of the ways of moving leads in the model.
  static Node* destination(Node* from, unsigned way, unsigned n) {
    const auto sibling = [from](std::ptrdiff_t away) -> Node* {
      if (from->parent == nullptr) return nullptr;
      const std::ptrdiff_t to = static_cast<std::ptrdiff_t>(from->index()) + away;
      const auto& all = from->parent->children;
      const bool exists = to >= 0 && to < static_cast<std::ptrdiff_t>(all.size());
      return exists ? all[static_cast<std::size_t>(to)] : nullptr;
    };
    switch (way) {
      case 0:
        return n < from->children.size() ? from->children[n] : nullptr;
      case 1:
        return from->parent;
      case 2:
        return sibling(1);
      case 3:
        return sibling(-1);
      case 4:
        return from->children.empty() ? nullptr : from->children.back();
      default:
        return const_cast<Node*>(from->root());
    }
  }

  void move() {
    Handle& handle = anyHandle();
    const unsigned way = next(6), n = next(5);
    Node* const to = destination(handle.node, way, n);
    ClsXml& xml = handle.xml;
    const bool moved = way == 0   ? xml.GetChild2(static_cast<std::int32_t>(n))
                       : way == 1 ? xml.GetParent2()
                       : way == 2 ? xml.NextSibling2()
                       : way == 3 ? xml.PreviousSibling2()
                       : way == 4 ? xml.LastChild2()
                                  : xml.GetRoot2();
    check(moved == (to != nullptr));
    if (moved) handle.node = to;
  }

  void give() {
    Handle& handle = anyHandle();
    Handle& made = anyHandle();
    const unsigned n = next(5);
    Node* const to = destination(handle.node, 0, n);
    const bool given = handle.xml.GetChildX(static_cast<std::int32_t>(n), made.xml);
    check(given == (to != nullptr));
    if (given) made.node = to;
  }

  void addTree() {
    Handle& handle = anyHandle();
    Handle& added = anyHandle();
    const bool possible = !handle.node->isWithin(added.node);
    check(handle.xml.AddChildTree(added.xml) == possible);
    if (!possible) return;
    added.node->detach();
    handle.node->add(added.node);
  }

  void extract() {
    Handle& handle = anyHandle();
    Handle& made = anyHandle();
    const unsigned n = next(4);
    Node* const child = destination(handle.node, 0, n);
    const bool done = handle.xml.ExtractChildByIndexX(static_cast<std::int32_t>(n), made.xml);
    check(done == (child != nullptr));
    if (!done) return;
    child->detach();
    made.node = child;
  }

  void removeAt() {
    Handle& handle = anyHandle();
    const unsigned n = next(4);
    Node* const child = destination(handle.node, 0, n);
    check(handle.xml.RemoveChildByIndex(static_cast<std::int32_t>(n)) == (child != nullptr));
    if (child != nullptr) child->detach();
  }

  void removeTag() {
    Handle& handle = anyHandle();
    const std::string tag = name();
    bool found = false;
    for (std::size_t i = handle.node->children.size(); i-- != 0;) {
      if (handle.node->children[i]->tag != tag) continue;
      handle.node->children[i]->detach();
      found = true;
    }
    check(handle.xml.RemoveChild(tag) == found);
  }

  void removeAll() {
    Handle& handle = anyHandle();
    check(handle.xml.RemoveAllChildren());
    handle.node->detachAll();
  }

  static void swapData(Node& a, Node& b) {
    std::swap(a.tag, b.tag);
    std::swap(a.content, b.content);
    std::swap(a.attributes, b.attributes);
  }

  void swapNodes() {
    Handle& handle = anyHandle();
    Handle& other = anyHandle();
    check(handle.xml.SwapNode(other.xml));
    if (handle.node != other.node) swapData(*handle.node, *other.node);
  }

  static void swapChildren(Node& a, Node& b) {
    std::swap(a.children, b.children);
    for (Node* child : a.children) child->parent = &a;
    for (Node* child : b.children) child->parent = &b;
  }

  void swapTrees() {
    Handle& handle = anyHandle();
    Handle& other = anyHandle();
    Node &a = *handle.node, &b = *other.node;
    const bool possible = &a == &b || (!a.isWithin(&b) && !b.isWithin(&a));
    check(handle.xml.SwapTree(other.xml) == possible);
    if (!possible || &a == &b) return;
    swapData(a, b);
    swapChildren(a, b);
  }

  void copyTree() {
    Handle& handle = anyHandle();
    Handle& from = anyHandle();
    check(handle.xml.Copy(from.xml));
    if (handle.node == from.node) return;
    Node* const made = copy(*from.node);
    const bool bothRoots = handle.node->parent == nullptr && from.node->parent == nullptr;
    if (bothRoots) handle.node->declared = from.node->declared;
    handle.node->detachAll();
    swapData(*handle.node, *made);
    swapChildren(*handle.node, *made);
  }

  void removeFromTree() {
    Handle& handle = anyHandle();
    check(handle.xml.RemoveFromTree() == (handle.node->parent != nullptr));
    handle.node->detach();
  }

  void changeContent() {
    Handle& handle = anyHandle();
    const std::string text = name();
    if (next(2) == 0) {
      check(handle.xml.AppendToContent(text));
      handle.node->content += text;
    } else {
      handle.xml.set_Content(text);
      handle.node->content = text;
    }
  }

  // In the order of their names: those behind it are added again.
  void setAttribute() {
    Handle& handle = anyHandle();
    const std::string key = name(), value = name();
    auto& all = handle.node->attributes;
    check(handle.xml.RemoveAttribute(key) == (all.erase(key) != 0));
    for (auto one = all.upper_bound(key); one != all.end(); ++one)
      check(handle.xml.RemoveAttribute(one->first));
    all[key] = value;
    for (auto one = all.find(key); one != all.end(); ++one)
      check(handle.xml.AddAttribute(one->first, one->second));
  }

  void clear() {
    Handle& handle = anyHandle();
    check(handle.xml.Clear());
    handle.node->detachAll();
    handle.node->tag = handle.node->content = "";
    handle.node->attributes.clear();
    handle.node->declared = handle.node->parent == nullptr;
  }

  void sort() {
    Handle& handle = anyHandle();
    check(handle.xml.SortByTag(true));
    auto& children = handle.node->children;
    std::stable_sort(children.begin(), children.end(),
                     [](const Node* a, const Node* b) { return a->tag < b->tag; });
  }

  // Small documents are copied when they join others, large ones stay where they are.
  void load() {
    Handle& handle = anyHandle();
    const unsigned count = next(8) == 0 ? 600 : next(4);
    std::string text = "<r p='1'>";
    Node* const root = newNode("r");
    root->attributes["p"] = "1";
    for (unsigned i = 0; i < count; ++i) {
      text += "<c>y<d/></c>";
      Node* const child = newNode("c", "y");
      child->add(newNode("d"));
      root->add(child);
    }
    check(handle.xml.LoadXml(text + "</r>", nullptr));
    handle.node = root;
  }

  void zipAndUnzip() {
    Handle& handle = anyHandle();
    check(handle.xml.ZipTree());
    check(handle.xml.UnzipTree());
    Node* const made = copy(*handle.node);
    handle.node->detachAll();
    swapChildren(*handle.node, *made);
  }

  void compare() {
    for (Handle& handle : handles_) {
      XString text;
      check(handle.xml.GetXmlX(text));
      const bool declared = handle.node->parent == nullptr && handle.node->declared;
      const std::string head =
          declared ? "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\r\n" : std::string();
      check(text.utf8() == head + handle.node->written());
      for (Handle& other : handles_)
        check((handle.xml.get_TreeId() == other.xml.get_TreeId()) ==
              (handle.node->root() == other.node->root()));
    }
  }

  static constexpr unsigned kHandles = 6;
  const std::uint8_t* at_;
  const std::uint8_t* end_;
  std::vector<std::unique_ptr<Node>> nodes_;
  std::array<Handle, kHandles> handles_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Trial(data, size).run();
  return 0;
}

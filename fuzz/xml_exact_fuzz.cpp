// Trees made a text and back: what any text is read as comes back exactly. Where a path leads is
// in the tree or nowhere.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/log_null.h"
#include "core/string_buffer.h"
#include "xml/parse_engine.h"
#include "xml/xml_exact_writer.h"
#include "xml/xml_path.h"
#include "xml/xml_store.h"

using namespace zantrel;

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

struct Loaded {
  Loaded(std::string_view text, bool trim)
      : tree(ParseEngine(*store, {trim}, log, nullptr).parse(text)) {}
  LogNull log;
  XmlStore::Ref store = XmlStore::create();
  TreeInfo* tree;
};

bool areEqual(const AttributeSet& a, const AttributeSet& b) {
  if (a.count() != b.count()) return false;
  for (std::size_t i = 0; i < a.count(); ++i)
    if (a[i].nameView() != b[i].nameView() || a[i].valueView() != b[i].valueView()) return false;
  return true;
}

// The attributes of the roots do not count.
void checkEqual(const TreeNode* a, const TreeNode* b) {
  const TreeNode* const top = a;
  const TreeNode* const otherTop = b;
  while (a != nullptr && b != nullptr) {
    check(a->tag() == b->tag() && a->content() == b->content() && a->isCdata() == b->isCdata());
    check(a->numChildren() == b->numChildren());
    check(a == top || areEqual(a->attributes(), b->attributes()));
    a = a->next(top);
    b = b->next(otherTop);
  }
  check(a == nullptr && b == nullptr);
}

void checkPath(TreeNode* root, std::string_view path) {
  LogNull log;
  XmlPathTarget target;
  if (!followXmlPath(root, path, target, log)) return;
  check(target.node->root() == root);
  if (target.kind == XmlPathTarget::Kind::Content) check(target.text == target.node->content());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  const Loaded first(text, data[0] % 2 != 0);
  if (first.tree == nullptr) return 0;
  StringBuffer written{std::string_view()};
  check(writeXmlExactly(first.tree->root, written));
  const Loaded second(written.view(), false);
  check(second.tree != nullptr);
  checkEqual(first.tree->root, second.tree->root);
  checkPath(first.tree->root, text.substr(0, text.find('<')));
  return 0;
}

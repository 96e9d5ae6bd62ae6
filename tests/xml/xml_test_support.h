#pragma once
// A document that lives as long as this, and its written form.

#include <string>

#include "support/recorded_log.h"
#include "xml/parse_engine.h"
#include "xml/xml_store.h"
#include "xml/xml_writer.h"

namespace zantrel::test {

class Document {
 public:
  explicit Document(std::string_view text, bool trim = true)
      : tree_(ParseEngine(*store_, {trim}, log_, nullptr).parse(text)) {}

  bool hasTree() const { return tree_ != nullptr; }
  TreeInfo& tree() const { return *tree_; }
  TreeNode& root() const { return *tree_->root; }
  const std::string& log() const { return log_.text(); }
  XmlStore& store() const { return *store_; }

  std::string written(bool omitDeclaration = false) const {
    return write(tree_->root, omitDeclaration);
  }
  static std::string write(TreeNode* node, bool omitDeclaration = false) {
    StringBuffer out{std::string_view()};
    writeXml(node, omitDeclaration, out);
    return std::string(out.view());
  }

 private:
  RecordedLog log_;
  XmlStore::Ref store_ = XmlStore::create();
  TreeInfo* tree_;
};

/// Everything in a subtree, in one line: tag[content]{name=value}(children), CDATA as tag!.
inline std::string outline(const TreeNode& node) {
  std::string text(node.tag());
  if (node.isCdata()) text += "!";
  if (!node.content().empty()) text += "[" + std::string(node.content()) + "]";
  for (const AttributeSet::Attribute& attribute : node.attributes())
    text +=
        "{" + std::string(attribute.nameView()) + "=" + std::string(attribute.valueView()) + "}";
  if (node.numChildren() == 0) return text;
  text += "(";
  for (std::size_t i = 0; i < node.numChildren(); ++i)
    text += (i != 0 ? "," : "") + outline(*node.child(i));
  return text + ")";
}

}  // namespace zantrel::test

#include "xml/xml_declaration.h"

#include <string>
#include <utility>

#include "xml/tree_info.h"
#include "xml/xml_store.h"

namespace zantrel {

namespace {

constexpr std::string_view kEncoding = "encoding";
constexpr std::string_view kStandalone = "standalone";

void removeNamed(AttributeSet& attributes, std::string_view name) {
  const std::ptrdiff_t found = attributes.find(name);
  if (found >= 0) attributes.remove(static_cast<std::size_t>(found));
}

}  // namespace

void makeDeclaration(XmlStore& store, TreeInfo& tree) {
  if (tree.declaration != nullptr) return;
  tree.declaration = store.newNode();
  tree.declaration->setTag("xml");
  AttributeSet& attributes = tree.declaration->editAttributes();
  attributes.add("version", "1.0");
  attributes.add(kEncoding, "utf-8");
}

std::string_view declared(const TreeInfo& tree, std::string_view name) {
  if (tree.declaration == nullptr) return {};
  const AttributeSet& attributes = tree.declaration->attributes();
  const std::ptrdiff_t found = attributes.find(name);
  return found >= 0 ? attributes[static_cast<std::size_t>(found)].valueView() : std::string_view();
}

void declareEncoding(XmlStore& store, TreeInfo& tree, std::string_view encoding) {
  makeDeclaration(store, tree);
  AttributeSet& attributes = tree.declaration->editAttributes();
  const std::ptrdiff_t found = attributes.find(kEncoding);
  if (encoding.empty()) return removeNamed(attributes, kEncoding);
  if (found >= 0) return attributes.setValue(static_cast<std::size_t>(found), encoding);
  // It stands before the standalone setting.
  const std::string standalone(declared(tree, kStandalone));
  removeNamed(attributes, kStandalone);
  attributes.add(kEncoding, encoding);
  if (!standalone.empty()) attributes.add(kStandalone, standalone);
}

void clearProlog(XmlStore& store, TreeInfo& tree) {
  if (tree.declaration != nullptr) store.end(std::exchange(tree.declaration, nullptr));
  for (TreeNode* instruction : tree.processingInstructions) store.end(instruction);
  tree.processingInstructions.clear();
  tree.standalone = false;
  tree.docType.clear();
  tree.styleSheet.clear();
}

void copyProlog(XmlStore& store, const TreeInfo& from, TreeInfo& to) {
  if (&from == &to) return;
  clearProlog(store, to);
  if (from.declaration != nullptr) to.declaration = store.copy(from.declaration);
  for (const TreeNode* instruction : from.processingInstructions)
    to.processingInstructions.push_back(store.copy(instruction));
  to.standalone = from.standalone;
  to.docType.append(from.docType);
  to.styleSheet.append(from.styleSheet);
}

}  // namespace zantrel

// The attributes of an element.

#include <string>

#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"

namespace zantrel {

namespace {

using Value = std::optional<std::string_view>;
using Attribute = AttributeSet::Attribute;

const Attribute* attributeAt(const TreeNode& node, std::int32_t index, LogBase& log) {
  const AttributeSet& all = node.attributes();
  return isIndex(index, all.count(), log) ? all.begin() + index : nullptr;
}

const Attribute* attributeNamed(const TreeNode& node, std::string_view name, LogBase& log) {
  const std::ptrdiff_t found = node.attributes().find(name);
  if (found >= 0) return node.attributes().begin() + found;
  log.logError("The element has no attribute of this name.");
  log.logDataStr("name", XString(name));
  return nullptr;
}

Value nameOf(const Attribute* attribute) {
  return attribute != nullptr ? Value(attribute->nameView()) : std::nullopt;
}
Value valueOf(const Attribute* attribute) {
  return attribute != nullptr ? Value(attribute->valueView()) : std::nullopt;
}

/// 0 is a number too: whether there was one decides the success.
std::int32_t numberOf(const Attribute* attribute, MethodCall& call) {
  call.setSuccess(attribute != nullptr);
  return attribute != nullptr ? intOf(attribute->valueView()) : 0;
}

bool isName(std::string_view name, LogBase& log) {
  if (!name.empty()) return true;
  log.logError("An attribute needs a name.");
  return false;
}

void put(TreeNode& node, std::string_view name, std::string_view value) {
  const std::ptrdiff_t found = node.attributes().find(name);
  if (found >= 0)
    node.editAttributes().setValue(static_cast<std::size_t>(found), value);
  else
    node.editAttributes().add(name, value);
}

}  // namespace

std::int32_t ClsXml::get_NumAttributes() {
  return property([](TreeNode& node) { return asInt(node.attributes().count()); });
}

bool ClsXml::GetAttributeNameX(std::int32_t index, XString& out) {
  return text("GetAttributeName", out,
              [&](TreeNode& node, LogBase& log) { return nameOf(attributeAt(node, index, log)); });
}

bool ClsXml::GetAttributeValueX(std::int32_t index, XString& out) {
  return text("GetAttributeValue", out,
              [&](TreeNode& node, LogBase& log) { return valueOf(attributeAt(node, index, log)); });
}

std::int32_t ClsXml::GetAttributeValueInt(std::int32_t index) {
  return on("GetAttributeValueInt", [&](TreeNode& node, MethodCall& c) {
    return numberOf(attributeAt(node, index, c.log()), c);
  });
}

bool ClsXml::GetAttrValueX(std::string_view name, XString& out) {
  return text("GetAttrValue", out, [&](TreeNode& node, LogBase& log) {
    return valueOf(attributeNamed(node, name, log));
  });
}

std::int32_t ClsXml::GetAttrValueInt(std::string_view name) {
  return on("GetAttrValueInt", [&](TreeNode& node, MethodCall& c) {
    return numberOf(attributeNamed(node, name, c.log()), c);
  });
}

bool ClsXml::HasAttribute(std::string_view name) {
  return ask("HasAttribute", [&](TreeNode& node) { return node.attributes().find(name) >= 0; });
}

bool ClsXml::HasAttrWithValue(std::string_view name, std::string_view value) {
  return ask("HasAttrWithValue", [&](TreeNode& node) {
    for (const Attribute& one : node.attributes())
      if (one.nameView() == name && one.valueView() == value) return true;
    return false;
  });
}

bool ClsXml::addAttribute(const char* method, std::string_view name, std::string_view value) {
  return on(method, [&](TreeNode& node, MethodCall& c) {
    if (!isName(name, c.log())) return false;
    if (node.attributes().find(name) >= 0) {
      c.log().logError("The element has an attribute of this name already.");
      c.log().logDataStr("name", XString(name));
      return false;
    }
    node.editAttributes().add(name, value);
    return true;
  });
}

bool ClsXml::AddAttribute(std::string_view name, std::string_view value) {
  return addAttribute("AddAttribute", name, value);
}

bool ClsXml::AddAttributeInt(std::string_view name, std::int32_t value) {
  return addAttribute("AddAttributeInt", name, std::to_string(value));
}

bool ClsXml::setAttribute(const char* method, std::string_view name, std::string_view value) {
  return on(method, [&](TreeNode& node, MethodCall& c) {
    if (!isName(name, c.log())) return false;
    put(node, name, value);
    return true;
  });
}

bool ClsXml::AddOrUpdateAttribute(std::string_view name, std::string_view value) {
  return setAttribute("AddOrUpdateAttribute", name, value);
}

bool ClsXml::AddOrUpdateAttributeI(std::string_view name, std::int32_t value) {
  return setAttribute("AddOrUpdateAttributeI", name, std::to_string(value));
}

bool ClsXml::UpdateAttribute(std::string_view name, std::string_view value) {
  return setAttribute("UpdateAttribute", name, value);
}

bool ClsXml::UpdateAttributeInt(std::string_view name, std::int32_t value) {
  return setAttribute("UpdateAttributeInt", name, std::to_string(value));
}

bool ClsXml::AddToAttribute(std::string_view name, std::int32_t amount) {
  return on("AddToAttribute", [&](TreeNode& node, MethodCall& c) {
    if (!isName(name, c.log())) return false;
    const std::ptrdiff_t found = node.attributes().find(name);
    const std::int64_t before =
        found >= 0 ? intOf(node.attributes().begin()[found].valueView()) : 0;
    put(node, name, std::to_string(before + amount));
    return true;
  });
}

bool ClsXml::RemoveAttribute(std::string_view name) {
  return on("RemoveAttribute", [&](TreeNode& node, MethodCall& c) {
    return attributeNamed(node, name, c.log()) != nullptr && node.editAttributes().removeAll(name);
  });
}

bool ClsXml::RemoveAllAttributes() {
  return on("RemoveAllAttributes", [](TreeNode& node, MethodCall&) {
    node.editAttributes().clear();
    return true;
  });
}

}  // namespace zantrel

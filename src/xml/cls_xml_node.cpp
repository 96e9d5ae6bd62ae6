// What an element itself holds.

#include <string>

#include "core/unicode_case.h"
#include "xml/cls_xml_frame.h"
#include "xml/xml_search.h"

namespace zantrel {

void ClsXml::get_Tag(XString& out) {
  property([&](TreeNode& node) { return out.setFromUtf8(node.tag()); });
}

void ClsXml::set_Tag(std::string_view tag) {
  property([&](TreeNode& node) { node.setTag(tag); });
}

void ClsXml::get_Content(XString& out) {
  property([&](TreeNode& node) { return out.setFromUtf8(node.content()); });
}

void ClsXml::set_Content(std::string_view content) {
  property([&](TreeNode& node) { node.setContent(content); });
}

std::int32_t ClsXml::get_ContentInt() {
  return property([](TreeNode& node) { return intOf(node.content()); });
}

void ClsXml::set_ContentInt(std::int32_t value) {
  set_Content(std::to_string(value));
}

bool ClsXml::get_Cdata() {
  return property([](TreeNode& node) { return node.isCdata(); });
}

void ClsXml::set_Cdata(bool cdata) {
  property([&](TreeNode& node) { node.setCdata(cdata); });
}

bool ClsXml::TagEquals(std::string_view tag) {
  return ask("TagEquals", [&](TreeNode& node) { return equalsIgnoreCase(node.tag(), tag); });
}

bool ClsXml::TagContentX(std::string_view tag, XString& out) {
  return text("TagContent", out,
              [&](TreeNode& node, LogBase& log) -> std::optional<std::string_view> {
                const XmlCriteria criteria{.tag = tag};
                const TreeNode* const found = findNext(&node, &node, XmlMatcher(criteria));
                if (found != nullptr) return found->content();
                notFound(log, "No element below has this tag.");
                log.logDataStr("tag", XString(tag));
                return std::nullopt;
              });
}

bool ClsXml::AddToContent(std::int32_t amount) {
  return on("AddToContent", [&](TreeNode& node, MethodCall&) {
    node.setContent(std::to_string(std::int64_t{intOf(node.content())} + amount));
    return true;
  });
}

bool ClsXml::AppendToContent(std::string_view text) {
  return on("AppendToContent", [&](TreeNode& node, MethodCall&) {
    if (!text.empty()) node.appendContent(text);
    return true;
  });
}

bool ClsXml::ContentMatches(std::string_view pattern, bool caseSensitive) {
  return ask("ContentMatches", [&](TreeNode& node) {
    const XmlCriteria criteria{.content = pattern, .caseSensitive = caseSensitive};
    return XmlMatcher(criteria).matches(node);
  });
}

}  // namespace zantrel

// What an element's children are and hold.

#include <algorithm>
#include <string>
#include <vector>

#include "core/ascii_text.h"
#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"
#include "xml/xml_search.h"

namespace zantrel {

namespace {

using Value = std::optional<std::string_view>;

auto childAt(std::int32_t index) {
  return [index](TreeNode& node, LogBase& log) { return childNumber(node, index, log); };
}

auto childWithTag(std::string_view tag, std::int32_t n = 0) {
  return [tag, n](TreeNode& node, LogBase& log) { return childTagged(node, tag, n, log); };
}

Value tagOf(const TreeNode* node) {
  return node != nullptr ? Value(node->tag()) : std::nullopt;
}
Value contentOf(const TreeNode* node) {
  return node != nullptr ? Value(node->content()) : std::nullopt;
}

bool isTrue(std::string_view content) {
  XString text(trimmed(content));
  return text.equalsIgnoreCaseUtf8("true") || text.equalsIgnoreCaseUtf8("yes") ||
         text.intValue() != 0;
}

template <class Test>
TreeNode* firstChild(const TreeNode& node, const Test& test) {
  for (std::size_t i = 0; i < node.numChildren(); ++i)
    if (test(*node.child(i))) return node.child(i);
  return nullptr;
}

auto exactly(std::string_view tag, std::string_view content) {
  return [=](const TreeNode& child) { return child.tag() == tag && child.content() == content; };
}

}  // namespace

std::int32_t ClsXml::get_NumChildren() {
  return property([](TreeNode& node) { return asInt(node.numChildren()); });
}

bool ClsXml::GetChildX(std::int32_t index, ClsXml& out) {
  return give("GetChild", out, childAt(index));
}

bool ClsXml::GetChild2(std::int32_t index) {
  return move("GetChild2", childAt(index));
}

bool ClsXml::GetChildTagX(std::int32_t index, XString& out) {
  return text("GetChildTag", out,
              [&](TreeNode& node, LogBase& log) { return tagOf(childNumber(node, index, log)); });
}

bool ClsXml::GetChildTagByIndexX(std::int32_t index, XString& out) {
  return text("GetChildTagByIndex", out,
              [&](TreeNode& node, LogBase& log) { return tagOf(childNumber(node, index, log)); });
}

bool ClsXml::GetChildContentX(std::string_view tag, XString& out) {
  return text("GetChildContent", out, [&](TreeNode& node, LogBase& log) {
    return contentOf(childTagged(node, tag, 0, log));
  });
}

bool ClsXml::GetChildContentByIndexX(std::int32_t index, XString& out) {
  return text("GetChildContentByIndex", out, [&](TreeNode& node, LogBase& log) {
    return contentOf(childNumber(node, index, log));
  });
}

bool ClsXml::GetChildExactX(std::string_view tag, std::string_view content, ClsXml& out) {
  return give("GetChildExact", out, [&](TreeNode& node, LogBase& log) {
    TreeNode* const found = firstChild(node, exactly(tag, content));
    return found != nullptr ? found : notFound(log, "The element has no such child.");
  });
}

bool ClsXml::GetChildWithTagX(std::string_view tag, ClsXml& out) {
  return give("GetChildWithTag", out, childWithTag(tag));
}

bool ClsXml::GetNthChildWithTagX(std::string_view tag, std::int32_t n, ClsXml& out) {
  return give("GetNthChildWithTag", out, childWithTag(tag, n));
}

bool ClsXml::GetNthChildWithTag2(std::string_view tag, std::int32_t n) {
  return move("GetNthChildWithTag2", childWithTag(tag, n));
}

bool ClsXml::FindChildX(std::string_view tag, ClsXml& out) {
  return give("FindChild", out, childWithTag(tag));
}

bool ClsXml::FindChild2(std::string_view tag) {
  return move("FindChild2", childWithTag(tag));
}

std::int32_t ClsXml::GetChildIntValue(std::string_view tag) {
  return on("GetChildIntValue", [&](TreeNode& node, MethodCall& c) {
    const TreeNode* const child = childTagged(node, tag, 0, c.log());
    c.setSuccess(child != nullptr);
    return child != nullptr ? intOf(child->content()) : 0;
  });
}

bool ClsXml::GetChildBoolValue(std::string_view tag) {
  return on("GetChildBoolValue", [&](TreeNode& node, MethodCall& c) {
    const TreeNode* const child = childTagged(node, tag, 0, c.log());
    c.setSuccess(child != nullptr);
    return child != nullptr && isTrue(child->content());
  });
}

bool ClsXml::HasChildWithTag(std::string_view tag) {
  return ask("HasChildWithTag", [&](TreeNode& node) { return findChild(node, tag) != nullptr; });
}

bool ClsXml::HasChildWithContent(std::string_view content) {
  return ask("HasChildWithContent", [&](TreeNode& node) {
    return firstChild(node, [&](const TreeNode& child) { return child.content() == content; }) !=
           nullptr;
  });
}

bool ClsXml::HasChildWithTagAndContent(std::string_view tag, std::string_view content) {
  return ask("HasChildWithTagAndContent",
             [&](TreeNode& node) { return firstChild(node, exactly(tag, content)) != nullptr; });
}

std::int32_t ClsXml::NumChildrenHavingTag(std::string_view tag) {
  return ask("NumChildrenHavingTag", [&](TreeNode& node) {
    const XmlCriteria criteria{.tag = tag};
    const XmlMatcher matcher(criteria);
    std::size_t count = 0;
    for (std::size_t i = 0; i < node.numChildren(); ++i) count += matcher.matches(*node.child(i));
    return asInt(count);
  });
}

bool ClsXml::ChildContentMatches(std::string_view tag, std::string_view pattern,
                                 bool caseSensitive) {
  return ask("ChildContentMatches", [&](TreeNode& node) {
    const XmlCriteria criteria{.tag = tag, .content = pattern, .caseSensitive = caseSensitive};
    const XmlMatcher matcher(criteria);
    return firstChild(node, [&](const TreeNode& child) { return matcher.matches(child); }) !=
           nullptr;
  });
}

bool ClsXml::AccumulateTagContentX(std::string_view tag, std::string_view skipTags, XString& out) {
  std::vector<std::string_view> skipped;
  for (std::size_t at = 0; at < skipTags.size();) {
    const std::size_t end = std::min(skipTags.find('|', at), skipTags.size());
    if (end != at) skipped.push_back(skipTags.substr(at, end - at));
    at = end + 1;
  }
  return on("AccumulateTagContent", [&](TreeNode& node, MethodCall& c) {
    const XmlCriteria criteria{.tag = tag};
    const XmlMatcher matcher(criteria);
    std::string all;
    for (const TreeNode* below = node.next(&node); below != nullptr;) {
      const bool skip = std::find(skipped.begin(), skipped.end(), below->tag()) != skipped.end();
      if (!skip && matcher.matches(*below)) all += below->content();
      below = skip ? below->nextBeside(&node) : below->next(&node);
    }
    c.setSuccess(true);
    return out.setFromUtf8(all);
  });
}

}  // namespace zantrel

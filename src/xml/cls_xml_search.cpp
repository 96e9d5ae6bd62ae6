// Searches below an element, and among its siblings.

#include "xml/cls_xml_frame.h"
#include "xml/xml_children.h"
#include "xml/xml_search.h"

namespace zantrel {

namespace {

constexpr char kNothingFound[] = "No element was found.";

}  // namespace

// A root's tree is known for each handle, so that search after search in a deep tree takes linear
// time.
bool ClsXml::isBelow(ClsXml& handle) {
  return place_.node()->isRoot() ? place_.tree() == handle.place_.tree()
                                 : isWithin(handle.place_.node(), *place_.node());
}

TreeNode* ClsXml::find(ClsXml& after, const XmlCriteria& criteria, LogBase& log) {
  TreeNode* const found =
      isBelow(after) ? findNext(place_.node(), after.place_.node(), XmlMatcher(criteria)) : nullptr;
  return found != nullptr ? found : notFound(log, kNothingFound);
}

bool ClsXml::giveFound(const char* name, ClsXml& after, const XmlCriteria& criteria, ClsXml& out) {
  XmlHandle made;
  const bool found = onTwo(name, after, [&](TreeNode&, TreeNode&, MethodCall& c) {
    TreeNode* const node = find(after, criteria, c.log());
    if (node == nullptr) return false;
    made.moveTo(place_, node);
    return true;
  });
  if (found) out.place_.take(made);
  return found;
}

bool ClsXml::moveToFound(const char* name, ClsXml& after, const XmlCriteria& criteria) {
  return onTwo(name, after, [&](TreeNode&, TreeNode&, MethodCall& c) {
    TreeNode* const node = find(after, criteria, c.log());
    if (node == nullptr) return false;
    place_.moveTo(node);
    return true;
  });
}

bool ClsXml::SearchForTagX(ClsXml& after, std::string_view tag, ClsXml& out) {
  return giveFound("SearchForTag", after, {.tag = tag}, out);
}

bool ClsXml::SearchForTag2(ClsXml& after, std::string_view tag) {
  return moveToFound("SearchForTag2", after, {.tag = tag});
}

bool ClsXml::SearchForAttributeX(ClsXml& after, std::string_view tag, std::string_view name,
                                 std::string_view pattern, bool caseSensitive, ClsXml& out) {
  return giveFound(
      "SearchForAttribute", after,
      {.tag = tag, .attribute = name, .value = pattern, .caseSensitive = caseSensitive}, out);
}

bool ClsXml::SearchForAttribute2(ClsXml& after, std::string_view tag, std::string_view name,
                                 std::string_view pattern, bool caseSensitive) {
  return moveToFound(
      "SearchForAttribute2", after,
      {.tag = tag, .attribute = name, .value = pattern, .caseSensitive = caseSensitive});
}

bool ClsXml::SearchForContentX(ClsXml& after, std::string_view tag, std::string_view pattern,
                               bool caseSensitive, ClsXml& out) {
  return giveFound("SearchForContent", after,
                   {.tag = tag, .content = pattern, .caseSensitive = caseSensitive}, out);
}

bool ClsXml::SearchForContent2(ClsXml& after, std::string_view tag, std::string_view pattern,
                               bool caseSensitive) {
  return moveToFound("SearchForContent2", after,
                     {.tag = tag, .content = pattern, .caseSensitive = caseSensitive});
}

bool ClsXml::SearchAllForContentX(ClsXml& after, std::string_view pattern, bool caseSensitive,
                                  ClsXml& out) {
  return giveFound("SearchAllForContent", after,
                   {.content = pattern, .caseSensitive = caseSensitive}, out);
}

bool ClsXml::SearchAllForContent2(ClsXml& after, std::string_view pattern, bool caseSensitive) {
  return moveToFound("SearchAllForContent2", after,
                     {.content = pattern, .caseSensitive = caseSensitive});
}

bool ClsXml::FindNextRecordX(std::string_view tag, std::string_view pattern, bool caseSensitive,
                             ClsXml& out) {
  return give("FindNextRecord", out, [&](TreeNode& node, LogBase& log) {
    const XmlCriteria criteria{.tag = tag, .content = pattern, .caseSensitive = caseSensitive};
    TreeNode* const found = findNextRecord(&node, XmlMatcher(criteria));
    return found != nullptr ? found : notFound(log, kNothingFound);
  });
}

}  // namespace zantrel

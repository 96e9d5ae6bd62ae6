// Children in another order.

#include "xml/cls_xml_frame.h"
#include "xml/xml_sort.h"

namespace zantrel {

bool ClsXml::sort(const char* name, XmlSortKey key) {
  return on(name, [&](TreeNode& node, MethodCall&) {
    key.ignoreCase = sortCaseInsensitive_ && !key.numeric;
    sortChildren(node, key);
    return true;
  });
}

bool ClsXml::get_SortCaseInsensitive() {
  return property([this](TreeNode&) { return sortCaseInsensitive_; });
}

void ClsXml::set_SortCaseInsensitive(bool ignoreCase) {
  property([&](TreeNode&) { sortCaseInsensitive_ = ignoreCase; });
}

bool ClsXml::SortByTag(bool ascending) {
  return sort("SortByTag", {.of = XmlSortKey::Of::Tag, .ascending = ascending});
}

bool ClsXml::SortByContent(bool ascending) {
  return sort("SortByContent", {.of = XmlSortKey::Of::Content, .ascending = ascending});
}

bool ClsXml::SortByAttribute(std::string_view name, bool ascending) {
  return sort("SortByAttribute",
              {.of = XmlSortKey::Of::Attribute, .attribute = name, .ascending = ascending});
}

bool ClsXml::SortByAttributeInt(std::string_view name, bool ascending) {
  return sort("SortByAttributeInt", {.of = XmlSortKey::Of::Attribute,
                                     .attribute = name,
                                     .numeric = true,
                                     .ascending = ascending});
}

bool ClsXml::SortRecordsByContent(std::string_view tag, bool ascending) {
  return sort("SortRecordsByContent",
              {.of = XmlSortKey::Of::Content, .recordTag = tag, .ascending = ascending});
}

bool ClsXml::SortRecordsByContentInt(std::string_view tag, bool ascending) {
  return sort(
      "SortRecordsByContentInt",
      {.of = XmlSortKey::Of::Content, .recordTag = tag, .numeric = true, .ascending = ascending});
}

bool ClsXml::SortRecordsByAttribute(std::string_view tag, std::string_view name, bool ascending) {
  return sort("SortRecordsByAttribute", {.of = XmlSortKey::Of::Attribute,
                                         .attribute = name,
                                         .recordTag = tag,
                                         .ascending = ascending});
}

}  // namespace zantrel

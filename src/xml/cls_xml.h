#pragma once

#include <cstdint>
#include <string_view>

#include "core/data_buffer.h"
#include "core/xstring.h"
#include "frame/component.h"
#include "frame/zantrel_crit_sec.h"
#include "xml/xml_handle.h"

namespace zantrel {

struct XmlCriteria;
struct XmlSortKey;

/// A handle on an element of an XML tree: the component behind the public class Xml, which
/// describes its members. Each method holds the handle's lock, then those of the trees that it
/// works on. Methods that give a new handle set `out`; outputs arrive empty.
class ClsXml final : public Component, public ZantrelCritSec {
 public:
  ZantrelCritSec* criticalSection() noexcept override { return this; }

  // Load and save (cls_xml_load.cpp)

  bool LoadXml(std::string_view text, ProgressEvent* progress);
  bool LoadXml2(std::string_view text, bool autoTrim, ProgressEvent* progress);
  bool LoadXmlFile(const XString& path, ProgressEvent* progress);
  bool LoadXmlFile2(const XString& path, bool autoTrim, ProgressEvent* progress);
  bool get_RequireWellFormed();
  void set_RequireWellFormed(bool required);
  bool SaveXml(const XString& path, ProgressEvent* progress);
  bool GetXmlX(XString& out);
  void get_Encoding(XString& out);
  void set_Encoding(std::string_view encoding);
  bool get_Standalone();
  void set_Standalone(bool standalone);
  void get_DocType(XString& out);
  void set_DocType(std::string_view docType);
  bool AddStyleSheet(std::string_view instruction);

  // Node data (cls_xml_node.cpp)

  void get_Tag(XString& out);
  void set_Tag(std::string_view tag);
  void get_Content(XString& out);
  void set_Content(std::string_view content);
  std::int32_t get_ContentInt();
  void set_ContentInt(std::int32_t value);
  bool get_Cdata();
  void set_Cdata(bool cdata);
  bool TagEquals(std::string_view tag);
  bool TagContentX(std::string_view tag, XString& out);
  bool AddToContent(std::int32_t amount);
  bool AppendToContent(std::string_view text);
  bool ContentMatches(std::string_view pattern, bool caseSensitive);

  // What content can be turned into (cls_xml_transform.cpp)

  bool DecodeContent();
  bool DecodeEntities();
  bool QEncodeContent(std::string_view charset);
  bool BEncodeContent(std::string_view charset);
  bool EncryptContent(const XString& password);
  bool DecryptContent(const XString& password);
  bool ZipContent();
  bool UnzipContent();
  bool GetBinaryContentX(bool unzip, bool decrypt, const XString& password, DataBuffer& out);
  bool SetBinaryContent(const DataBuffer& bytes, bool zip, bool encrypt, const XString& password);
  bool SetBinaryContentFromFile(const XString& path, bool zip, bool encrypt,
                                const XString& password);
  bool SaveBinaryContent(const XString& path, bool unzip, bool decrypt, const XString& password);
  bool ZipTree();
  bool UnzipTree();

  // Attributes (cls_xml_attributes.cpp)

  std::int32_t get_NumAttributes();
  bool GetAttributeNameX(std::int32_t index, XString& out);
  bool GetAttributeValueX(std::int32_t index, XString& out);
  std::int32_t GetAttributeValueInt(std::int32_t index);
  bool GetAttrValueX(std::string_view name, XString& out);
  std::int32_t GetAttrValueInt(std::string_view name);
  bool HasAttribute(std::string_view name);
  bool HasAttrWithValue(std::string_view name, std::string_view value);
  bool AddAttribute(std::string_view name, std::string_view value);
  bool AddAttributeInt(std::string_view name, std::int32_t value);
  bool AddOrUpdateAttribute(std::string_view name, std::string_view value);
  bool AddOrUpdateAttributeI(std::string_view name, std::int32_t value);
  bool UpdateAttribute(std::string_view name, std::string_view value);
  bool UpdateAttributeInt(std::string_view name, std::int32_t value);
  bool AddToAttribute(std::string_view name, std::int32_t amount);
  bool RemoveAttribute(std::string_view name);
  bool RemoveAllAttributes();

  // Children (cls_xml_children.cpp)

  std::int32_t get_NumChildren();
  bool GetChildX(std::int32_t index, ClsXml& out);
  bool GetChild2(std::int32_t index);
  bool GetChildTagX(std::int32_t index, XString& out);
  bool GetChildTagByIndexX(std::int32_t index, XString& out);
  bool GetChildContentX(std::string_view tag, XString& out);
  bool GetChildContentByIndexX(std::int32_t index, XString& out);
  bool GetChildExactX(std::string_view tag, std::string_view content, ClsXml& out);
  bool GetChildWithTagX(std::string_view tag, ClsXml& out);
  bool GetNthChildWithTagX(std::string_view tag, std::int32_t n, ClsXml& out);
  bool GetNthChildWithTag2(std::string_view tag, std::int32_t n);
  std::int32_t GetChildIntValue(std::string_view tag);
  bool GetChildBoolValue(std::string_view tag);
  bool HasChildWithTag(std::string_view tag);
  bool HasChildWithContent(std::string_view content);
  bool HasChildWithTagAndContent(std::string_view tag, std::string_view content);
  std::int32_t NumChildrenHavingTag(std::string_view tag);
  bool ChildContentMatches(std::string_view tag, std::string_view pattern, bool caseSensitive);
  bool FindChildX(std::string_view tag, ClsXml& out);
  bool FindChild2(std::string_view tag);
  bool AccumulateTagContentX(std::string_view tag, std::string_view skipTags, XString& out);

  // Changes of children (cls_xml_edit_children.cpp)

  bool NewChildX(std::string_view tag, std::string_view content, ClsXml& out);
  bool NewChild2(std::string_view tag, std::string_view content);
  bool NewChildInt2(std::string_view tag, std::int32_t value);
  bool FindOrAddNewChildX(std::string_view tag, ClsXml& out);
  bool UpdateChildContent(std::string_view tag, std::string_view content);
  bool UpdateChildContentInt(std::string_view tag, std::int32_t value);
  bool AddToChildContent(std::string_view tag, std::int32_t amount);
  bool AddChildTree(ClsXml& tree);
  bool ExtractChildByIndexX(std::int32_t index, ClsXml& out);
  bool ExtractChildByNameX(std::string_view tag, ClsXml& out);
  bool RemoveChild(std::string_view tag);
  bool RemoveChildByIndex(std::int32_t index);
  bool RemoveChildWithContent(std::string_view content);
  bool RemoveAllChildren();

  // Navigation (cls_xml_navigation.cpp)

  bool GetRootX(ClsXml& out);
  bool GetRoot2();
  bool GetParentX(ClsXml& out);
  bool GetParent2();
  bool GetSelfX(ClsXml& out);
  bool FirstChildX(ClsXml& out);
  bool FirstChild2();
  bool LastChildX(ClsXml& out);
  bool LastChild2();
  bool NextSiblingX(ClsXml& out);
  bool NextSibling2();
  bool PreviousSiblingX(ClsXml& out);
  bool PreviousSibling2();
  std::int32_t get_TreeId();
  bool ZantrelPathX(std::string_view path, XString& out);

  // Search (cls_xml_search.cpp)

  bool FindNextRecordX(std::string_view tag, std::string_view pattern, bool caseSensitive,
                       ClsXml& out);
  bool SearchForTagX(ClsXml& after, std::string_view tag, ClsXml& out);
  bool SearchForTag2(ClsXml& after, std::string_view tag);
  bool SearchForAttributeX(ClsXml& after, std::string_view tag, std::string_view name,
                           std::string_view pattern, bool caseSensitive, ClsXml& out);
  bool SearchForAttribute2(ClsXml& after, std::string_view tag, std::string_view name,
                           std::string_view pattern, bool caseSensitive);
  bool SearchForContentX(ClsXml& after, std::string_view tag, std::string_view pattern,
                         bool caseSensitive, ClsXml& out);
  bool SearchForContent2(ClsXml& after, std::string_view tag, std::string_view pattern,
                         bool caseSensitive);
  bool SearchAllForContentX(ClsXml& after, std::string_view pattern, bool caseSensitive,
                            ClsXml& out);
  bool SearchAllForContent2(ClsXml& after, std::string_view pattern, bool caseSensitive);

  // Sorting (cls_xml_sort.cpp)

  bool get_SortCaseInsensitive();
  void set_SortCaseInsensitive(bool ignoreCase);
  bool SortByTag(bool ascending);
  bool SortByContent(bool ascending);
  bool SortByAttribute(std::string_view name, bool ascending);
  bool SortByAttributeInt(std::string_view name, bool ascending);
  bool SortRecordsByContent(std::string_view tag, bool ascending);
  bool SortRecordsByContentInt(std::string_view tag, bool ascending);
  bool SortRecordsByAttribute(std::string_view tag, std::string_view name, bool ascending);

  // Tree edits (cls_xml_edit.cpp)

  bool Clear();
  bool Copy(ClsXml& from);
  bool SwapNode(ClsXml& other);
  bool SwapTree(ClsXml& other);
  bool RemoveFromTree();

 private:
  template <class Body>
  auto property(const Body& body);
  template <class Body>
  auto on(const char* name, const Body& body);
  template <class Body>
  auto ask(const char* name, const Body& body);
  template <class Body>
  bool onTwo(const char* name, ClsXml& other, const Body& body);
  template <class Find>
  bool move(const char* name, const Find& find);
  template <class Find>
  bool give(const char* name, ClsXml& out, const Find& find);
  template <class Find>
  bool text(const char* name, XString& out, const Find& find);

  template <class Transform>
  bool transform(const char* name, const Transform& work);
  bool load(MethodCall& call, std::string_view text, bool trim);
  bool loadFile(MethodCall& call, const XString& path, bool trim);
  bool setAttribute(const char* method, std::string_view name, std::string_view value);
  bool addAttribute(const char* method, std::string_view name, std::string_view value);
  bool updateChild(const char* method, std::string_view tag, std::string_view content);
  template <class Find>
  bool extract(const char* name, ClsXml& out, const Find& find);
  template <class Test>
  bool removeChildren(const char* name, const Test& test);
  bool giveRelative(const char* name, ClsXml& out, TreeNode* (*find)(TreeNode&), const char* error);
  bool moveRelative(const char* name, TreeNode* (*find)(TreeNode&), const char* error);
  bool isBelow(ClsXml& handle);
  TreeNode* find(ClsXml& after, const XmlCriteria& criteria, LogBase& log);
  bool giveFound(const char* name, ClsXml& after, const XmlCriteria& criteria, ClsXml& out);
  bool moveToFound(const char* name, ClsXml& after, const XmlCriteria& criteria);

  bool sort(const char* name, XmlSortKey key);

  XmlHandle place_;
  bool requireWellFormed_ = false;
  bool sortCaseInsensitive_ = false;
};

}  // namespace zantrel

#pragma once
// Handles on documents, and tables of what methods make of them.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "support/component_log.h"
#include "xml/cls_xml.h"
#include "xml/xml_test_support.h"

namespace zantrel::test {

inline void load(ClsXml& xml, std::string_view text) {
  ASSERT_TRUE(xml.LoadXml(text, nullptr)) << text;
}

inline std::string writtenBy(ClsXml& xml) {
  XString out;
  EXPECT_TRUE(xml.GetXmlX(out));
  return std::string(out.utf8());
}

/// All below the handle in one line, as outline() does it.
inline std::string outlineOf(ClsXml& xml) {
  const Document document(writtenBy(xml));
  return outline(document.root());
}

/// The text that a method gives by its output argument; "?" after a failure.
inline std::string given(const std::function<bool(XString&)>& method) {
  XString out;
  return method(out) ? std::string(out.utf8()) : "?";
}

inline std::string tagOf(ClsXml& xml) {
  XString out;
  xml.get_Tag(out);
  return std::string(out.utf8());
}

struct EditCase {
  const char* before;
  std::function<bool(ClsXml&)> edit;
  bool result;
  const char* after;  // as outline() writes it
};

inline void expectEdits(const std::vector<EditCase>& cases) {
  for (const EditCase& one : cases) {
    SCOPED_TRACE(std::string(one.before) + " -> " + one.after);
    ClsXml xml;
    load(xml, one.before);
    EXPECT_EQ(one.edit(xml), one.result) << logOf(xml);
    EXPECT_EQ(xml.get_LastMethodSuccess(), one.result);
    EXPECT_EQ(outlineOf(xml), one.after);
  }
}

}  // namespace zantrel::test

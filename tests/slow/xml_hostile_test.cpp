// Documents made to cost much: whatever is repeated in them, time and memory are linear in their
// size. Quadratic work would take hours here.

#include <gtest/gtest.h>

#include <string>

#include "support/recorded_log.h"
#include "xml/parse_engine.h"
#include "xml/well_formed.h"
#include "xml/xml_store.h"
#include "xml/xml_writer.h"

namespace zantrel::test {
namespace {

struct Loaded {
  explicit Loaded(const std::string& text, bool trim = true)
      : tree(ParseEngine(*store, {trim}, log, nullptr).parse(text)) {}
  RecordedLog log;
  XmlStore::Ref store = XmlStore::create();
  TreeInfo* tree;
};

std::string repeated(const std::string& unit, std::size_t size) {
  std::string text;
  text.reserve(size + unit.size());
  while (text.size() < size) text += unit;
  return text;
}

TEST(XmlHostileTest, WhateverIsRepeatedMemoryIsLinear) {
  constexpr std::size_t kSize = 10 << 20;
  constexpr std::size_t kMostPerByte = 100;  // "<" alone makes an element
  const struct {
    std::string start, unit;
  } cases[] = {
      {"", "<"},
      {"", "<a>"},
      {"", "<a b=\""},
      {"", "<a b"},
      {"", "<a/>"},
      {"", "</"},
      {"", "</a>"},
      {"", "<a>x</a"},
      {"", "<!"},
      {"", "<!--"},
      {"", "<!DOCTYPE "},
      {"", "<!DOCTYPE a>"},
      {"", "<![CDATA["},
      {"", "<?"},
      {"", "<?xml ?>"},
      {"", "<?xml-stylesheet ?>"},
      {"", "<?xml-stylesheet "},
      {"", "<?p a='1'?>"},
      {"<a>", "&"},
      {"<a>", "&amp;"},
      {"<a>", "&amp;amp;lt;<b/>"},
      {"<a>", "<![CDATA[&am]]><![CDATA[p;]]>x<b/>"},
      {"<a>", "<!-- -->\n"},
      {"<a>", "<!-- -"},
      {"<a>", "]]>"},
      {"<a>", "x<b/>"},
      {"<a ", "b='' "},
      {"<a ", "='"},
      {"<a ", "'"},
      {"<a ", "= "},
      {"<!DOCTYPE a [", "<!ENTITY e '&e;'>"},
      {"<!DOCTYPE a [", "<!ELEMENT a (("},
      {"<!DOCTYPE a [", "%p;"},
      {"<!DOCTYPE a [<!ENTITY % p '<!ELEMENT a (&#37;m;)>'>", "%p;"},
      {"<!DOCTYPE a [<!ATTLIST a b CDATA '", "&amp;"},
  };
  for (const auto& one : cases) {
    const std::string text = one.start + repeated(one.unit, kSize);
    const Loaded loaded(text);
    EXPECT_LT(loaded.store->memoryBytes(), kMostPerByte * text.size()) << one.start << one.unit;
    EXPECT_LT(loaded.log.text().size(), 20000U) << one.start << one.unit;
    RecordedLog log;
    EXPECT_FALSE(checkWellFormed(text, log)) << one.start << one.unit;
  }
}

TEST(XmlHostileTest, LongPartsAreReadAndWritten) {
  const std::string huge = repeated("&lt;x ", 100 << 20);
  const std::string part = repeated("&lt;x ", 20 << 20);
  const struct {
    std::string name, text;
  } cases[] = {
      {"value", "<a b=\"" + huge + "\"/>"},
      {"content", "<a>" + part + "</a>"},
      {"section", "<a><![CDATA[" + part + "]]></a>"},
      {"name", "<" + std::string(part.size(), 'a') + "/>"},
      {"comment", "<!--" + part + "--><a/>"},
      {"instruction", "<?p " + part + "?><a/>"},
  };
  for (const auto& one : cases) {
    const Loaded loaded(one.text);
    ASSERT_NE(loaded.tree, nullptr) << one.name;
    EXPECT_LT(loaded.store->memoryBytes(), 8 * one.text.size()) << one.name;
    RecordedLog log;
    EXPECT_TRUE(checkWellFormed(one.text, log)) << one.name;
    StringBuffer out{std::string_view()};
    writeXml(loaded.tree->root, true, out);
    const Loaded again(std::string(out.view()));
    StringBuffer twice{std::string_view()};
    writeXml(again.tree->root, true, twice);
    EXPECT_TRUE(out.view() == twice.view()) << one.name;
  }
}

}  // namespace
}  // namespace zantrel::test

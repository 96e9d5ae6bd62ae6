#include "core/charset/charset_naming.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "core/charset/charset.h"
#include "core/charset/code_page.h"
#include "core/string_buffer.h"
#include "platform/ansi_code_page.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

/// tests/data/charset/names.tsv: code page, canonical name or "-", names by comma.
std::map<std::string, int> publishedNames() {
  std::map<std::string, int> names;
  for (const auto& row : test::readTable(std::string(ZANTREL_TEST_DATA) + "/charset/names.tsv")) {
    std::string list = row.at(2) + ',';
    for (std::size_t from = 0, comma; (comma = list.find(',', from)) != std::string::npos;
         from = comma + 1) {
      names[list.substr(from, comma - from)] = std::stoi(row.at(0));
    }
  }
  return names;
}

TEST(CharsetNamingTest, EveryPublishedNameGivesItsCodePage) {
  const auto names = publishedNames();
  EXPECT_EQ(names.size() + 1,
            CharsetNaming::acceptedNames().size());  // "ansi" is not in a registry
  for (const auto& [name, page] : names) {
    EXPECT_EQ(CharsetNaming::charsetToCodePage(name), page) << name;
  }
}

TEST(CharsetNamingTest, EveryPublishedCodePageGivesItsFirstName) {
  std::size_t count = 0;
  for (const auto& row : test::readTable(std::string(ZANTREL_TEST_DATA) + "/charset/names.tsv")) {
    const int page = std::stoi(row.at(0));
    StringBuffer name("left over");
    if (row.at(1) == "-") {
      EXPECT_FALSE(CharsetNaming::codePageToCharset(page, name)) << page;
      EXPECT_TRUE(name.empty()) << page;
      continue;
    }
    ++count;
    EXPECT_TRUE(CharsetNaming::codePageToCharset(page, name)) << page;
    EXPECT_EQ(name.view(), row.at(1));
    EXPECT_EQ(CharsetNaming::charsetToCodePage(name.view()), page) << row.at(1);
  }
  EXPECT_EQ(count, CharsetNaming::canonicalNames().size());
}

TEST(CharsetNamingTest, IgnoresCaseBlanksAndUnderscores) {
  const struct {
    const char* name;
    int page;
  } cases[] = {
      {"Shift_JIS", 932},       {" \t\r\nSHIFT-JIS \n", 932}, {"sjis", 932},
      {"ISO_8859-1", 28591},    {"KS_C_5601-1987", 949},      {"ISO-8859-8 Visual", 28598},
      {"x-Chinese_CNS", 20000}, {"x_Chinese-Eten", 20002},    {"UTF_16LE", 1200},
  };
  for (const auto& c : cases) EXPECT_EQ(CharsetNaming::charsetToCodePage(c.name), c.page) << c.name;
}

TEST(CharsetNamingTest, UnknownAndShortNamesGiveZero) {
  for (const std::string& name :
       {std::string(), std::string("  "), std::string("us"), std::string(" x "),
        std::string("iso-8859-99"), std::string("latin 1"), std::string(100000, 'a'),
        std::string("utf-8\0", 6)}) {
    EXPECT_EQ(CharsetNaming::charsetToCodePage(name), 0) << name.substr(0, 20);
  }
}

TEST(CharsetNamingTest, AnsiIsThePageOfTheProcess) {
  const int before = ansiCodePage();
  EXPECT_EQ(CharsetNaming::charsetToCodePage("ANSI"), before);
  setAnsiCodePage(1251);
  EXPECT_EQ(CharsetNaming::charsetToCodePage("ansi"), 1251);
  setAnsiCodePage(0);
}

TEST(CharsetTest, KeepsCodePageAndCanonicalName) {
  Charset charset;
  EXPECT_FALSE(charset.isKnown());
  EXPECT_TRUE(charset.setByName(" SJIS "));
  EXPECT_EQ(charset.codePage(), 932);
  EXPECT_EQ(charset.name().view(), "shift_jis");
  EXPECT_FALSE(charset.setByName("no such charset"));
  EXPECT_EQ(charset.codePage(), 932);
  EXPECT_TRUE(charset.setByCodePage(65001));
  EXPECT_EQ(charset.name().view(), "utf-8");
  EXPECT_TRUE(charset.setByName("cp930"));  // has no canonical name
  EXPECT_EQ(charset.codePage(), 50930);
  EXPECT_EQ(charset.name().view(), "cp930");
  EXPECT_FALSE(charset.setByCodePage(12345));
  EXPECT_TRUE(charset.name().empty());
}

}  // namespace
}  // namespace zantrel

// What is well-formed and what is not, and what is said of that. Other parsers judge the same kinds
// of documents in tests/interop.

#include "xml/well_formed.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>

#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

/// "line:column error" and what else is told; empty for a document that is well-formed.
std::string verdict(const std::string& document) {
  RecordedLog log;
  const bool isWellFormed = checkWellFormed(document, log);
  EXPECT_EQ(isWellFormed, log.text().empty()) << document;
  if (isWellFormed) return "";
  std::string error, line, column, rest;
  std::istringstream lines(log.text());
  std::getline(lines, error);
  std::getline(lines, line);
  std::getline(lines, column);
  std::string text = line.substr(6) + ":" + column.substr(8) + " " + error.substr(7);
  while (std::getline(lines, rest)) text += " " + rest;
  return text;
}

std::string inDtd(const std::string& declarations, const std::string& content = "") {
  return "<!DOCTYPE a [" + declarations + "]><a>" + content + "</a>";
}

TEST(WellFormedTest, AcceptsWhatTheStandardAllows) {
  const std::string documents[] = {
      "<a/>",
      "\xEF\xBB\xBF<a></a >\r\n<!-- end --><?end?>",
      "<?xml version='1.0'?><a/>",
      "<?xml\tversion = \"1.17\"\nencoding='x-Y.z_9' standalone='no' ?>\n<a/>",
      "<:_a.-\xC2\xB7\xCC\x80 b='' c=\"'\" d='\"' e='>&#9;&#x10FFFF;&amp;'/>",
      "<\xF0\x90\x80\x80\xE2\x80\xBF/>",
      "<a>]] ]> ]]&gt; > <![CDATA[<&]]]]></a>",
      "<a><!-- - - --><!----><?p?><?p ?x? ?><?xmlx?></a>",
      "<!DOCTYPE a><a/>",
      "<!DOCTYPE a SYSTEM 'a\"&<%' [ ] ><a>&elsewhere;</a>",
      "<!DOCTYPE a PUBLIC \"-//x ('+,/:=?;!*#@$_%)\" ''><a/>",
      inDtd("<!ELEMENT a EMPTY><!ELEMENT a ANY ><!ELEMENT a (#PCDATA)><!ELEMENT a ( #PCDATA )*>"),
      inDtd("<!ELEMENT a (#PCDATA|b | c)*><!ELEMENT a (b)><!ELEMENT a ( b? , (c|(d+)*)+ )? >"),
      inDtd("<!ATTLIST a><!ATTLIST a b CDATA #REQUIRED c ID #IMPLIED d (x|1-) 'x'\n"
            "e NOTATION ( n | m ) #FIXED \"&lt;\" f NMTOKENS '' >"),
      inDtd("<!NOTATION n PUBLIC 'p'><!NOTATION n PUBLIC 'p' 's'><!NOTATION n SYSTEM 's' >"),
      inDtd("<!ENTITY e 'x'><!ENTITY f SYSTEM 's'><!ENTITY g PUBLIC 'p' 's' NDATA n>", "&e;&f;"),
      inDtd("<!ENTITY e '<b>&f;</b>&f;'><!ENTITY f 'x&amp;'>", "<b c='&f;'/>&e;&e;"),
      inDtd("<!ENTITY lt '&#38;#60;'><!ENTITY e '&lt;'>", "<b c='&lt;&e;'/>"),
      inDtd("<!ENTITY e '&#38;'>"),                    // nobody uses it
      inDtd("<!ENTITY e 'x'><!ENTITY e '<'>", "&e;"),  // the first one counts
      inDtd("<!ENTITY % p '<!ENTITY e \"x\">'> %p; %p;", "&e;&f;"),
      inDtd("%unknown;<!ENTITY e '<'>", "&e;"),  // perhaps it was declared before
      inDtd("<!ENTITY % p SYSTEM 's'>%p;", "&e;"),
      inDtd("<!ENTITY % m 'x'><!ENTITY % p '<!ELEMENT b (&#37;m;)>'>%p;"),
      inDtd("<!ENTITY % p '<![IGNORE[ <! ]]>'>%p;"),
      inDtd("<!-- ]> --><?p ]> ?><!ENTITY e ']>'>"),
  };
  for (const std::string& document : documents) EXPECT_EQ(verdict(document), "") << document;
}

struct Case {
  std::string document, verdict;
};

void expectVerdicts(std::initializer_list<Case> cases) {
  for (const Case& one : cases) EXPECT_EQ(verdict(one.document), one.verdict) << one.document;
}

TEST(WellFormedTest, RefusesWrongStructure) {
  constexpr char kNoElement[] = " The document's element is expected here.";
  constexpr char kTrailing[] =
      " Only comments and processing instructions may follow the document's element.";
  constexpr char kOther[] = " The tag closes another element than the open one. openElement: ";
  expectVerdicts({
      {"", std::string("1:1") + kNoElement},
      {"\n x<a/>", std::string("2:2") + kNoElement},
      {"<!DOCTYPE a><!DOCTYPE a><a/>", "1:13 Neither a tag nor other markup begins with this <."},
      {"<a/><b/>", std::string("1:5") + kTrailing},
      {"<a/>\rx", std::string("2:1") + kTrailing},
      {"<a/></a>", std::string("1:5") + kTrailing},
      {"<a>\n\xC3\xA9<b></a>", std::string("2:5") + kOther + "b"},
      {"<a></ab>", std::string("1:4") + kOther + "a"},
      {"<a></a\xC3\xA9>", std::string("1:4") + kOther + "a"},
      {"<a></ a>", std::string("1:4") + kOther + "a"},
      {"<a></a b=''>", "1:8 Something else is expected here. expected: >"},
      {"<a>\r\n<b>\r</b>", "1:1 The element is not closed. openElement: a"},
      {"<a", "1:3 An attribute or the end of the tag is expected here. tag: a"},
      {"<a / >", "1:5 Something else is expected here. expected: >"},
      {"<a>< /a>", "1:4 Neither a tag nor other markup begins with this <."},
      {"<a><1/></a>", "1:4 Neither a tag nor other markup begins with this <."},
      {"<a>x]]>]</a>", "1:5 Text must not hold the end of a CDATA section."},
      {"<a><![CDATA[]]</a>", "1:4 The CDATA section has no end."},
      {"<a><![cdata[]]></a>", "1:4 In content, <! begins a comment or a CDATA section only."},
      {"<!-- x -- y --><a/>", "1:8 A comment must not hold two hyphens."},
      {"<!-- x ---><a/>", "1:8 A comment must not hold two hyphens."},
      {"<!--><a/>", "1:1 The comment has no end."},
      {"<a><? p?></a>", "1:6 A name is expected here."},
      {"<a><?p x></a>", "1:4 The processing instruction has no end."},
      {"<a><?p!?></a>", "1:7 White space is missing here."},
      {"<a><?XmL x?></a>", "1:4 Only the declaration at the very start is named xml."},
      {"\n<?xml version='1.0'?><a/>", "2:1 Only the declaration at the very start is named xml."},
  });
}

TEST(WellFormedTest, RefusesWrongDeclarations) {
  const auto with = [](const std::string& text) { return "<?xml " + text + "?><a/>"; };
  expectVerdicts({
      {with("encoding='x'"), "1:7 Something else is expected here. expected: version"},
      {with("version='2.0'"), "1:7 This is no version of XML. version: 2.0"},
      {with("version='1.'"), "1:7 This is no version of XML. version: 1."},
      {with("version='1.0'encoding='x'"), "1:20 Something else is expected here. expected: ?>"},
      {with("version='1.0' encoding=''"), "1:21 This is no name of an encoding. encoding: "},
      {with("version='1.0' encoding='8'"), "1:21 This is no name of an encoding. encoding: 8"},
      {with("version='1.0' standalone='Yes'"),
       "1:21 A document is standalone or not: yes or no. standalone: Yes"},
      {with("version='1.0' standalone='no' encoding='x'"),
       "1:37 Something else is expected here. expected: ?>"},
      {with("version=1.0"), "1:15 A text in quotes is expected here."},
      {with("version='1.0"), "1:15 The text in quotes has no end."},
  });
}

TEST(WellFormedTest, RefusesWrongAttributesAndReferences) {
  expectVerdicts({
      {"<a b/>", "1:5 Something else is expected here. expected: ="},
      {"<a b=c/>", "1:6 An attribute's value is expected here, in quotes."},
      {"<a b='c/>", "1:6 The attribute's value has no end."},
      {"<a b='<'/>", "1:7 An attribute's value must not hold a bare <."},
      {"<a b=''c=''/>", "1:8 An attribute or the end of the tag is expected here. tag: a"},
      {"<a 1=''/>", "1:4 A name is expected here."},
      {"<a =''/>", "1:4 A name is expected here."},
      {"<a b='' ='' c=''/>", "1:9 A name is expected here."},
      {"<a b='' c='' b=''/>", "1:14 The element has the attribute twice. attribute: b"},
      {"<a>&</a>", "1:4 This is not a reference to an entity."},
      {"<a>&amp</a>", "1:4 This is not a reference to an entity."},
      {"<a b='& '/>", "1:7 This is not a reference to an entity."},
      {"<a>&#;</a>", "1:4 This is not a reference to a character."},
      {"<a>&#X41;</a>", "1:4 This is not a reference to a character."},
      {"<a>&#65</a>", "1:4 This is not a reference to a character."},
      {"<a>&#xD800;</a>", "1:4 The reference is to a character that XML does not allow."},
      {"<a>&#4294967361;</a>", "1:4 The reference is to a character that XML does not allow."},
      {"<a>&AMP;</a>", "1:4 The entity is not declared. entity: AMP"},
      {"<a b='&nbsp;'/>", "1:7 The entity is not declared. entity: nbsp"},
  });
}

TEST(WellFormedTest, RefusesCharactersFirstOfAll) {
  expectVerdicts({
      {"<a><b>\n\x01", "2:1 XML does not allow this character. character: U+0001"},
      {std::string("<a>\0</a>", 8), "1:4 XML does not allow this character. character: U+0000"},
      {"<a>\xE2\x82\xAC\xEF\xBF\xBF</a>",
       "1:5 XML does not allow this character. character: U+FFFF"},
      {"<a>\xED\xA0\x80</a>", "1:4 The bytes here are not UTF-8."},
      {"<a>\xC0\x80</a>", "1:4 The bytes here are not UTF-8."},
      {"<a>\xE2\x82</a>", "1:4 The bytes here are not UTF-8."},
      {"<a>0123456789abcdef0123456789abcdef\x7F\xFF</a>", "1:37 The bytes here are not UTF-8."},
      {"\xEF\xBB\xBF\xEF\xBB\xBF<a/>", "1:2 The document's element is expected here."},
  });
}

TEST(WellFormedTest, RefusesWrongDtds) {
  constexpr char kMissing[] = " Something else is expected here. expected: ";
  const std::string space = " White space is missing here.";
  expectVerdicts({
      {"<!DOCTYPE a SYSTEM><a/>", "1:19" + space},
      {"<!DOCTYPE a PUBLIC 'p'><a/>", "1:23" + space},
      {"<!DOCTYPE a PUBLIC 'p\t' 's'><a/>",
       "1:20 A public identifier must not hold this character."},
      {"<!DOCTYPE a [", "1:14 The document type declaration has no end."},
      {"<!DOCTYPE a [] x><a/>", std::string("1:16") + kMissing + ">"},
      {inDtd("x"), "1:14 A declaration is expected here."},
      {inDtd("<![IGNORE[]]>"), "1:14 A conditional section must not stand in the document itself."},
      {inDtd("<!ELEMENT a>"), "1:25" + space},
      {inDtd("<!ELEMENT a b>"), std::string("1:26") + kMissing + "("},
      {inDtd("<!ELEMENT a ()>"), "1:27 A name is expected here."},
      {inDtd("<!ELEMENT a (b,c|d)>"), "1:30 A group must not have both commas and bars."},
      {inDtd("<!ELEMENT a (b,(c)>"), std::string("1:32") + kMissing + ")"},
      {inDtd("<!ELEMENT a (b ?)>"), std::string("1:29") + kMissing + ")"},
      {inDtd("<!ELEMENT a (#PCDATA|b)>"), std::string("1:37") + kMissing + "*"},
      {inDtd("<!ELEMENT a (b|#PCDATA)*>"), "1:29 A name is expected here."},
      {inDtd("<!ATTLIST a b>"), "1:27" + space},
      {inDtd("<!ATTLIST a b STRING ''>"), "1:28 The type of an attribute is expected here."},
      {inDtd("<!ATTLIST a b CDATA''>"), "1:33" + space},
      {inDtd("<!ATTLIST a b CDATA ''c ID ''>"), "1:36" + space},
      {inDtd("<!ATTLIST a b (c,d) 'c'>"), std::string("1:30") + kMissing + ")"},
      {inDtd("<!ATTLIST a b NOTATION (1) '1'>"), "1:38 A name is expected here."},
      {inDtd("<!ATTLIST a b CDATA '&e;'><!ENTITY e 'x'>"),
       "1:35 The entity is not declared. entity: e"},
      {inDtd("<!ENTITY e x>"), std::string("1:25") + kMissing + "SYSTEM"},
      {inDtd("<!ENTITY e '&x'>"), "1:26 This is not a reference to an entity."},
      {inDtd("<!ENTITY e '%x;'>"),
       "1:26 A parameter entity must not be used inside a declaration."},
      {inDtd("<!ENTITY %x; 'x'>"), "1:24" + space},
      {inDtd("<!ENTITY % p SYSTEM 's' NDATA n>"), std::string("1:38") + kMissing + ">"},
      {inDtd("<!ENTITY e SYSTEM 's'NDATA n>"), "1:35" + space},
      {inDtd("<!NOTATION n>"), "1:26" + space},
      {inDtd("<!-- x -- -->"), "1:21 A comment must not hold two hyphens."},
  });
}

TEST(WellFormedTest, RefusesEntitiesThatMustNotBeUsed) {
  const std::string itself = " The entity refers to itself. entity: ";
  expectVerdicts({
      {inDtd("<!ENTITY e '&e;'>", "&e;"), "1:26" + itself + "e inEntity: e"},
      {inDtd("<!ENTITY e '<b>&f;</b>'><!ENTITY f '&e;'>", "&e;"),
       "1:50" + itself + "e inEntity: f"},
      {inDtd("<!ENTITY e '&f;'><!ENTITY f '&e;'>", "<b c='&e;'/>"),
       "1:43" + itself + "e inEntity: f"},
      {inDtd("<!ENTITY % p '&#37;p;'>%p;"), "1:27" + itself + "p inEntity: p"},
      {inDtd("<!ENTITY e '<b>'>", "&e;</b>"),
       "1:26 The element is not closed. openElement: b inEntity: e"},
      {inDtd("<!ENTITY e '</a>'>", "&e;"),
       "1:26 The tag closes an element that does not begin in the same entity. inEntity: e"},
      {inDtd("<!ENTITY e '&#60;'>", "&e;"),
       "1:25 Neither a tag nor other markup begins with this <. inEntity: e"},
      {inDtd("<!ENTITY e '&#38;'>", "&e;"),
       "1:25 This is not a reference to an entity. inEntity: e"},
      {inDtd("<!ENTITY e '<b/>'><!ENTITY f '&e;'>", "<b c='&f;'/>"),
       "1:60 An entity that holds a < must not stand in an attribute's value. entity: e"},
      {inDtd("<!ENTITY e SYSTEM 's'>", "<b c='&e;'/>"),
       "1:47 An attribute's value must not refer to another file. entity: e"},
      {inDtd("<!ENTITY e SYSTEM 's' NDATA n>", "&e;"), "1:49 The entity is no text. entity: e"},
      {inDtd("<!ENTITY % m ''><!ENTITY % p '<!ELEMENT b (&#37;m;)><![IGNORE[]]>x'>%p;"), ""},
      {inDtd("<!ENTITY % m ''><!ENTITY % p '&#37;m; x <![IGNORE[]]>'>%p;"),
       "1:43 A declaration is expected here. inEntity: p"},
      {inDtd("<!ENTITY % p '<!ENTITY e >'>%p;"),
       "1:39 Something else is expected here. expected: SYSTEM inEntity: p"},
      {"<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 's'><a>&e;</a>",
       "1:65 The entity is not declared. entity: e"},
      {"<?xml version='1.0' standalone='yes'?>" +
           inDtd("<!ENTITY % p '<!ENTITY e \"x\">'>%p;", "&e;"),
       "1:91 A parameter entity declares the entity of a standalone document. entity: e"},
  });
}

TEST(WellFormedTest, LongNamesAreShortenedInTheLog) {
  const std::string name(1000000, 'x');
  EXPECT_LT(verdict("<" + name + ">").size(), 300U);
}

// What grows when it is expanded is looked through once; what is deep or long is only that.
TEST(WellFormedTest, HostileDocumentsTakeLinearTime) {
  constexpr int kMany = 1000000;
  std::string declarations = "<!ENTITY e0 'x'>";
  std::string parameters = "<!ENTITY % p0 '<!ELEMENT a ANY>'>";
  for (int i = 1; i < 10000; ++i) {
    const auto reference = [i](const std::string& mark) {
      return mark + std::to_string(i - 1) + ";";
    };
    declarations +=
        "<!ENTITY e" + std::to_string(i) + " '" + reference("&e") + reference("&e") + "'>";
    parameters += "<!ENTITY % p" + std::to_string(i) + " '" + reference("&#37;p") +
                  reference("&#37;p") + "'>";
  }
  const std::string last = "&e9999;";
  EXPECT_EQ(verdict(inDtd(declarations, last + last + "<b c='" + last + last + "'/>")), "");
  EXPECT_EQ(verdict(inDtd(parameters + "%p9999;%p9999;")), "");

  std::string deep, groups, attributes;
  for (int i = 0; i < kMany; ++i) {
    deep += "<a>";
    groups += "(";
    attributes += " b" + std::to_string(i) + "=''";
  }
  std::string closed = deep;
  for (int i = 0; i < kMany; ++i) closed += "</a>";
  EXPECT_EQ(verdict(closed), "");
  EXPECT_EQ(verdict(deep), "1:2999998 The element is not closed. openElement: a");
  EXPECT_NE(verdict(inDtd("<!ELEMENT a " + groups + ">")), "");
  EXPECT_EQ(verdict("<a" + attributes + "/>"), "");
  EXPECT_EQ(verdict("<a" + attributes + " b999999=''/>"),
            "1:" + std::to_string(attributes.size() + 4) +
                " The element has the attribute twice. attribute: b999999");
  EXPECT_EQ(verdict("<a b='" + std::string(100 * kMany, 'x') + "'/>"), "");
  EXPECT_NE(verdict("<a>" + std::string(kMany, '&')), "");
}

}  // namespace
}  // namespace zantrel::test

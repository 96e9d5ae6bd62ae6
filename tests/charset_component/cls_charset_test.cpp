#include "charset/cls_charset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "frame/progress_event.h"
#include "platform/file.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

using namespace std::string_view_literals;
using test::bytes;
using test::expectLogged;
using test::logOf;
using test::TempFolder;

/// A component that converts between two charsets.
struct Converter {
  Converter(std::string_view from, std::string_view to, int errorAction = 0) {
    component.settings().fromCharset.setFromUtf8(from);
    component.settings().toCharset.setFromUtf8(to);
    component.settings().errorAction = errorAction;
  }
  ClsCharset* operator->() { return &component; }
  ClsCharset& operator*() { return component; }

  std::string data(std::string_view in, bool expected = true) {
    DataBuffer out;
    EXPECT_EQ(component.ConvertData(bytes(in), out, nullptr), expected) << logOf(component);
    return std::string(out.text());
  }
  std::string html(std::string_view in, bool expected = true) {
    DataBuffer out;
    EXPECT_EQ(component.ConvertHtml(bytes(in), out, nullptr), expected) << logOf(component);
    return std::string(out.text());
  }
  /// Converts a file over an old one; what that holds afterwards.
  std::string file(std::string_view in, bool expected = true, bool isHtml = false) {
    const TempFolder folder;
    test::writeFile(folder / "in", in);
    test::writeFile(folder / "out", "old");
    const XString from(folder / "in");
    const XString to(folder / "out");
    const bool ok = isHtml ? component.ConvertHtmlFile(from, to, nullptr)
                           : component.ConvertFile(from, to, nullptr);
    EXPECT_EQ(ok, expected) << logOf(component);
    return test::readFile(folder / "out");
  }

  ClsCharset component;
};

TEST(ClsCharsetTest, ConvertsDataAndLogsTheWayOfEveryMethod) {
  Converter charset("iso-8859-1", "utf-8");
  EXPECT_EQ(charset.data("caf\xE9"), "caf\xC3\xA9");
  const std::string log = logOf(*charset);
  EXPECT_EQ(log.find("ZantrelLog:\r\n  ConvertData:\r\n    DllDate: "), 0u) << log;
  expectLogged(*charset, {"FromCharset: iso-8859-1", "ToCharset: utf-8", "NumBytesIn: 4",
                          "NumBytesOut: 5", "Success."});
}

TEST(ClsCharsetTest, FailsNamingAnUnknownCharset) {
  Converter from("no-such", "utf-8");
  EXPECT_EQ(from.data("x", false), "");
  expectLogged(*from, {"FromCharset: no-such", "Unknown charset.", "Failed."});
  Converter to("utf-8", "xx");
  EXPECT_EQ(to.data("x", false), "");
  expectLogged(*to, {"ToCharset: xx", "Unknown charset."});
  Converter unset("", "utf-8");
  EXPECT_EQ(unset.data("x", false), "");
  expectLogged(*unset, {"No charset is set."});
}

struct ActionCase {
  int action;
  std::string_view in, to, out;
  bool ok;
};
const ActionCase kActions[] = {
    {0,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a?b", false},
    {0,
     "a\xFF"
     "b",
     "utf-16le",
     "a\0\xFD\xFF"
     "b\0"sv,
     false},
    {1,
     "a\xE2\x82\xAC"
     "b\xFF",
     "iso-8859-1", "ab", true},
    {2,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a<>b", true},
    {3,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a&#x20AC;b", true},
    {4,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a&#8364;b", true},
    {5,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1",
     "a\x80"
     "b",
     true},
    {6,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a", false},
    {77,
     "a\xE2\x82\xAC"
     "b",
     "iso-8859-1", "a?b", false},
};

TEST(ClsCharsetTest, DoesWithWhatCannotBeConvertedAsErrorActionSays) {
  for (const ActionCase& c : kActions) {
    Converter charset("utf-8", c.to, c.action);
    ASSERT_TRUE(charset->put_AltToCharset(XString("windows-1252")));
    ASSERT_TRUE(charset->put_DefaultString(XString("<>")));
    EXPECT_EQ(charset.data(c.in, c.ok), c.out) << c.action;
  }
}

TEST(ClsCharsetTest, SaysWhatWasLostAndWhereTheFirstOfItStands) {
  Converter charset("utf-8", "iso-8859-1");
  charset.data("ab\xE2\x82\xAC \xFF\xE2\x82\xAC", false);
  expectLogged(*charset, {"Character encoding conversion failed.\r\n    NumCharsIn: 10\r\n"
                          "    Charset: 28591\r\n    ConvertedToNumBytes: 6\r\n",
                          "NumInvalid: 1", "NumUnmappable: 2", "FirstErrorAt: 2", "Failed."});
}

TEST(ClsCharsetTest, NeedsAnAlternativeCharsetForTheActionThatWritesIt) {
  Converter charset("utf-8", "iso-8859-1", 5);
  EXPECT_EQ(charset.data("x", false), "");
  expectLogged(*charset, {"AltToCharset: ", "No charset is set."});
}

TEST(ClsCharsetTest, KeepsTheOldAlternativeWhenTheNewNameIsUnknown) {
  ClsCharset charset;
  EXPECT_TRUE(charset.put_AltToCharset(XString("koi8-r")));
  EXPECT_EQ(logOf(charset), "ZantrelLog:\r\n");
  EXPECT_FALSE(charset.put_AltToCharset(XString("no-such")));
  EXPECT_STREQ(charset.settings().altToCharset.getUtf8(), "koi8-r");
  expectLogged(charset, {"AltToCharset: no-such", "Unknown charset."});
}

TEST(ClsCharsetTest, HoldsTheDefaultStringAsBytesOfTheTargetCharset) {
  Converter charset("utf-8", "koi8-r", 2);
  EXPECT_TRUE(charset->put_DefaultString(XString("\xD0\xAF")));
  EXPECT_EQ(charset->settings().defaultBytes.text(), "\xF1");
  XString text;
  charset->get_DefaultString(text);
  EXPECT_STREQ(text.getUtf8(), "\xD0\xAF");
  EXPECT_FALSE(charset->put_DefaultString(XString("\xE4\xB8\x80")));
  EXPECT_EQ(charset->settings().defaultBytes.text(), "\xF1");
  for (const std::string_view to : {"utf-16be", "utf-32", "utf-7", "iso-2022-kr", "iso-2022-jp"}) {
    Converter other("utf-8", to, 2);
    Converter back(to, "utf-8");
    ASSERT_TRUE(other->put_DefaultString(XString("<?>")));
    EXPECT_EQ(back.data(other.data("a\xFF"
                                   "b")),
              "a<?>b")
        << to;
  }
}

TEST(ClsCharsetTest, WritesAMarkWhenTheTargetAsksForOne) {
  EXPECT_EQ(Converter("us-ascii", " BOM:utf-8").data("a"),
            "\xEF\xBB\xBF"
            "a");
  EXPECT_EQ(Converter("us-ascii", "bom:unicodefffe").data("a"), "\xFE\xFF\0a"sv);
  EXPECT_EQ(Converter("us-ascii", "bom:koi8-r").data("a"), "a");
  EXPECT_EQ(Converter("utf-8", "bom:utf-8")
                .file("\xEF\xBB\xBF"
                      "a"),
            "\xEF\xBB\xBF"
            "a");
}

TEST(ClsCharsetTest, ReturnsInputUnchangedWhenBothCharsetsAreTheSame) {
  EXPECT_EQ(Converter("utf-8", "utf8").data("\xFF\xEF\xBB\xBF"), "\xFF\xEF\xBB\xBF");
}

TEST(ClsCharsetTest, CountsBigEndianOutputAsConvertedWhateverWasInvalid) {
  EXPECT_EQ(Converter("utf-8", "utf-16be").data("a\xFF"), "\0a\xFF\xFD"sv);
}

TEST(ClsCharsetTest, ObeysTheMarkOfAUnicodeFile) {
  EXPECT_EQ(Converter("utf-16", "utf-8").file("\xFE\xFF\0a\0b"sv), "ab");
  EXPECT_EQ(Converter("utf-8", "koi8-r").file("\xFF\xFE\0\0a\0\0\0"sv), "a");
  EXPECT_EQ(Converter("windows-1252", "utf-8")
                .file("\xFF\xFE"
                      "a"),
            "\xC3\xBF\xC3\xBE"
            "a");
}

TEST(ClsCharsetTest, KeepsTheOldFileWhenAConversionFails) {
  EXPECT_EQ(Converter("utf-8", "iso-8859-1").file("\xE2\x82\xAC", false), "old");
  EXPECT_EQ(Converter("utf-8", "iso-8859-1", 6).file("\xE2\x82\xAC", false), "old");
  EXPECT_EQ(Converter("no-such", "iso-8859-1").file("x", false), "old");
  Converter missing("utf-8", "iso-8859-1");
  const TempFolder folder;
  EXPECT_FALSE(missing->ConvertFile(XString(folder / "none"), XString(folder / "out"), nullptr));
  EXPECT_FALSE(fileExists(folder / "out"));
}

TEST(ClsCharsetTest, ConvertsLargeFilesAsItConvertsData) {
  std::string text;
  while (text.size() < 300000) text += "\xE6\x97\xA5\xE6\x9C\xAC a\xF0\x9F\x98\x80";
  Converter charset("utf-8", "gb18030");
  const std::string expected = charset.data(text);
  EXPECT_TRUE(charset.file(text) == expected);
  EXPECT_TRUE(Converter("gb18030", "utf-8").file(expected) == text);
  text += "\xFF";
  charset.file(text, false);
  expectLogged(*charset, {"FirstErrorAt: " + std::to_string(text.size() - 1)});
}

struct Sink final : ProgressEvent {
  int abortAt = 1000;
  std::vector<std::uint32_t> percents;
  void PercentDone(std::uint32_t percent, bool& abort) override {
    percents.push_back(percent);
    abort = static_cast<int>(percent) >= abortAt;
  }
};

TEST(ClsCharsetTest, ReportsRisingPercentagesThatEndAtHundred) {
  const std::string text(1 << 20, 'a');
  Converter charset("us-ascii", "utf-16");
  Sink sink;
  DataBuffer out;
  EXPECT_TRUE(charset->ConvertData(bytes(text), out, &sink));
  ASSERT_GT(sink.percents.size(), 5u);
  EXPECT_TRUE(std::is_sorted(sink.percents.begin(), sink.percents.end()));
  EXPECT_EQ(sink.percents.back(), 100u);
}

TEST(ClsCharsetTest, StopsWhenTheProgressSinkAborts) {
  const TempFolder folder;
  test::writeFile(folder / "in", std::string(1 << 20, 'a'));
  test::writeFile(folder / "out", "old");
  Converter charset("us-ascii", "utf-16");
  Sink sink;
  sink.abortAt = 50;
  EXPECT_FALSE(charset->ConvertFile(XString(folder / "in"), XString(folder / "out"), &sink));
  EXPECT_LT(sink.percents.back(), 60u);
  EXPECT_EQ(test::readFile(folder / "out"), "old");
  expectLogged(*charset, {"Aborted by the application."});
  EXPECT_FALSE(charset->VerifyFile(XString("us-ascii"), XString(folder / "in"), &sink));
}

TEST(ClsCharsetTest, ConvertsBetweenBytesAndText) {
  Converter charset("shift_jis", "gb2312");
  XString text;
  EXPECT_TRUE(charset->ConvertToUnicode(bytes("\x93\xFA\x96{"), text, nullptr));
  EXPECT_STREQ(text.getUtf8(), "\xE6\x97\xA5\xE6\x9C\xAC");
  DataBuffer out;
  EXPECT_TRUE(charset->ConvertFromUnicode(text, out, nullptr));
  EXPECT_EQ(out.text(), "\xC8\xD5\xB1\xBE");
  expectLogged(*charset, {"ConvertFromUnicode:", "ToCharset: gb2312"});
}

TEST(ClsCharsetTest, RefusesBytesThatAreNoText) {
  Converter charset("utf-8", "utf-8");
  XString text;
  EXPECT_FALSE(charset->ConvertToUnicode(bytes("a\xFF"), text, nullptr));
  EXPECT_TRUE(text.isEmpty());
  expectLogged(*charset, {"NumInvalid: 1", "FirstErrorAt: 1"});
}

TEST(ClsCharsetTest, ConvertsHtmlByItsOwnWordAndChangesIt) {
  Converter charset("", "utf-8");
  EXPECT_EQ(charset.html("<meta charset=shift_jis>\x93\xFA"), "<meta charset=utf-8>\xE6\x97\xA5");
  expectLogged(*charset, {"HtmlCharset: shift_jis"});
  EXPECT_EQ(charset.file("<meta charset=shift_jis>\x93\xFA", true, true),
            "<meta charset=utf-8>\xE6\x97\xA5");
  EXPECT_EQ(Converter("koi8-r", "utf-8").html("<p>\xF1"), "<meta charset=\"utf-8\"><p>\xD0\xAF");
  EXPECT_EQ(Converter("utf-8", "bom:utf-16le").html("<p>"),
            "\xFF\xFE<\0m\0e\0t\0a\0 \0c\0h\0a\0r\0s\0e\0t\0=\0\"\0u\0t\0f\0-\0"
            "1\0"
            "6\0l\0e\0\"\0>\0<"
            "\0p\0>\0"sv);
}

TEST(ClsCharsetTest, ConvertsHtmlThatIsLongerThanItsHead) {
  const std::string rest(200000, 'x');
  Converter charset("", "utf-16be");
  const std::string out = charset.html("<meta charset=koi8-r>" + rest + "\xF1");
  EXPECT_EQ(charset.file("<meta charset=koi8-r>" + rest + "\xF1", true, true), out);
  EXPECT_EQ(out.size(), 2 * (std::string_view("<meta charset=utf-16be>").size() + rest.size() + 1));
}

TEST(ClsCharsetTest, FailsOnHtmlWhoseCharsetNothingTells) {
  Converter charset("", "utf-8");
  EXPECT_EQ(charset.html("<p>x", false), "");
  expectLogged(*charset, {"The document declares no charset, and FromCharset is not set."});
  EXPECT_EQ(charset.html("<meta charset=martian>", false), "");
  expectLogged(*charset, {"HtmlCharset: martian", "The document declares an unknown charset"});
}

TEST(ClsCharsetTest, TellsWhereAnHtmlDocumentIsInvalidThoughItsHeadWasEdited) {
  const std::string html = "<html><meta charset=utf-8>\xFF";
  Converter charset("", "iso-8859-15");
  charset.html(html, false);
  expectLogged(*charset, {"FirstErrorAt: " + std::to_string(html.size() - 1)});
}

TEST(ClsCharsetTest, TellsTheCharsetOfHtmlDocumentsAndFiles) {
  ClsCharset charset;
  XString name;
  EXPECT_TRUE(charset.GetHtmlCharsetX(bytes("<meta charset=Big5>"), name));
  EXPECT_STREQ(name.getUtf8(), "Big5");
  EXPECT_TRUE(charset.GetHtmlCharsetX(bytes("<p>"), name));
  EXPECT_TRUE(name.isEmpty());
  const TempFolder folder;
  test::writeFile(folder / "page", "<meta charset=Big5>");
  EXPECT_TRUE(charset.GetHtmlFileCharsetX(XString(folder / "page"), name));
  EXPECT_STREQ(name.getUtf8(), "Big5");
  EXPECT_FALSE(charset.GetHtmlFileCharsetX(XString(folder / "none"), name));
}

TEST(ClsCharsetTest, VerifiesDataAndFiles) {
  struct Case {
    std::string_view charset, data;
    int badAt;  // -1 for valid data
  };
  const Case kCases[] = {
      {"utf-8", "\xC3\xA9", -1},         {"utf-8", "ab\xC3", 2},
      {"us-ascii", "ab\x80", 2},         {"shift_jis", "\x93\xFA\x81", 2},
      {"utf-16le", "a\0\0\xD8"sv, 2},    {"windows-1252", "\xFF\xFE", -1},
      {"utf-16", "\xFE\xFF\xD8\0"sv, 2}, {"utf-8", "", -1},
  };
  const TempFolder folder;
  for (const Case& c : kCases) {
    ClsCharset charset;
    test::writeFile(folder / "data", c.data);
    for (const bool file : {false, true}) {
      if (!file && c.data.starts_with("\xFE\xFF")) continue;  // only files obey a mark
      const bool valid =
          file ? charset.VerifyFile(XString(c.charset), XString(folder / "data"), nullptr)
               : charset.VerifyData(XString(c.charset), bytes(c.data));
      EXPECT_EQ(valid, c.badAt < 0) << c.charset << logOf(charset);
      if (c.badAt >= 0) expectLogged(charset, {"FirstErrorAt: " + std::to_string(c.badAt)});
    }
  }
  ClsCharset charset;
  EXPECT_FALSE(charset.VerifyData(XString("no-such"), bytes("x")));
  expectLogged(charset, {"Charset: no-such", "Unknown charset."});
}

TEST(ClsCharsetTest, KeepsInputAndOutputOnlyWhenAskedTo) {
  Converter charset("us-ascii", "utf-16le");
  charset->settings().saveLast = true;
  charset.data("a=");
  const auto read = [&](void (ClsCharset::*get)(XString&)) {
    XString text;
    ((*charset).*get)(text);
    return std::string(text.getUtf8());
  };
  EXPECT_EQ(read(&ClsCharset::get_LastInputAsHex), "613D");
  EXPECT_EQ(read(&ClsCharset::get_LastInputAsQP), "a=3D");
  EXPECT_EQ(read(&ClsCharset::get_LastOutputAsHex), "61003D00");
  EXPECT_EQ(read(&ClsCharset::get_LastOutputAsQP), "a=00=3D=00");
  charset->settings().saveLast = false;
  charset.data("b");
  EXPECT_EQ(read(&ClsCharset::get_LastInputAsHex), "");
  EXPECT_EQ(read(&ClsCharset::get_LastOutputAsQP), "");
}

TEST(ClsCharsetTest, RecodesEntitiesAndUrls) {
  struct Case {
    bool (ClsCharset::*method)(const XString&, XString&);
    std::string_view in, out;
  };
  const Case kCases[] = {
      {&ClsCharset::HtmlEntityDecodeX, "&lt;&#233;&#xE9;&eacute;", "<\xC3\xA9\xC3\xA9\xC3\xA9"},
      {&ClsCharset::EntityEncodeHexX, "<\xC3\xA9", "<&#xE9;"},
      {&ClsCharset::EntityEncodeDecX, "<\xC3\xA9", "<&#233;"},
      {&ClsCharset::UrlDecodeStrX, "a+b%C3%A9", "a b\xC3\xA9"},
      {&ClsCharset::UrlDecodeStrX, "caf%E9", "caf\xC3\xA9"},
  };
  for (const Case& c : kCases) {
    ClsCharset charset;
    XString out;
    EXPECT_TRUE((charset.*c.method)(XString(c.in), out));
    EXPECT_EQ(out.utf8(), c.out);
  }
}

TEST(ClsCharsetTest, MapsNamesAndCodePages) {
  ClsCharset charset;
  EXPECT_EQ(charset.CharsetToCodePage(XString(" SHIFT-JIS ")), 932);
  EXPECT_EQ(charset.CharsetToCodePage(XString("jp")), 0);
  expectLogged(charset, {"Unknown charset.", "Failed."});
  XString name;
  EXPECT_TRUE(charset.CodePageToCharset(949, name));
  EXPECT_STREQ(name.getUtf8(), "ks_c_5601-1987");
  name.clear();
  EXPECT_FALSE(charset.CodePageToCharset(4711, name));
  EXPECT_TRUE(charset.CharsetNamesX(name));
  EXPECT_TRUE(name.containsSubstringUtf8("\nsjis\t932\tshift_jis\n"));
}

TEST(ClsCharsetTest, ReadsAndWritesWholeFiles) {
  const TempFolder folder;
  ClsCharset charset;
  DataBuffer content;
  EXPECT_TRUE(charset.WriteFile(XString(folder / "\xC3\xA9\xE6\x97\xA5"), bytes("a\0b"sv)));
  EXPECT_TRUE(charset.ReadFile(XString(folder / "\xC3\xA9\xE6\x97\xA5"), content));
  EXPECT_EQ(content.text(), "a\0b"sv);
  EXPECT_FALSE(charset.ReadFile(XString(folder / "none"), content));
  EXPECT_FALSE(charset.WriteFile(XString(folder / "no/such/folder"), content));
}

}  // namespace
}  // namespace zantrel

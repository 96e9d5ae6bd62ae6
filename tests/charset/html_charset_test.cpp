#include "core/charset/html_charset.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"

namespace zantrel {
namespace {

using namespace std::string_view_literals;

struct NameCase {
  std::string_view html;
  std::string_view name;
};

// Most of these are the cases of the HTML standard's prescan, in the order of its steps.
const NameCase kNames[] = {
    {"", ""},
    {"plain text", ""},
    {"<meta charset=utf-8>", "utf-8"},
    {"<META CHARSET = ' Shift_JIS '>", "Shift_JIS"},
    {"<meta/charset='koi8-r'/>", "koi8-r"},
    {"<meta charset=\"\">", ""},
    {"<meta charset=\"utf-8", ""},
    {"<meta charset=\"greek\" charset=\"latin1\">", "greek"},
    {"<metaphor charset=utf-8>", ""},
    {"</meta charset=utf-8>", ""},
    {"<meta name=description content='text/html; charset=big5'>", ""},
    {"<meta http-equiv=Content-Type content='text/html; charset=big5'>", "big5"},
    {"<meta content='text/html;CHARSET = \"euc-kr\"' http-equiv=content-type>", "euc-kr"},
    {"<meta http-equiv='content-type' content='text/html; charset=gb2312; x=y'>", "gb2312"},
    {"<meta http-equiv='content-type' content='charset charset = gb18030'>", "gb18030"},
    {"<meta http-equiv='content-type' content='text/html; charset=\"gb2312'>", ""},
    {"<meta http-equiv=refresh content='0; url=?charset=utf-7'>", ""},
    {"<!-- <meta charset=utf-7> --><meta charset=utf-8>", "utf-8"},
    {"<!--><meta charset=utf-8>", "utf-8"},
    {"<!-- never closed <meta charset=utf-8>", ""},
    {"<p title='<meta charset=utf-7>'><meta charset=utf-8>", "utf-8"},
    {"<script>'<meta charset=utf-7>'</script><meta charset=utf-8>", "utf-8"},
    {"<title><meta charset=utf-7></TITLE><meta charset=utf-8>", "utf-8"},
    {"<? <meta charset=utf-7 ?><meta charset=utf-8>", "utf-8"},
    {"< meta charset=utf-7><meta charset=utf-8>", "utf-8"},
    {"<meta charset=no-such-charset><meta charset=utf-8>", "utf-8"},
    {"<meta charset=no-such-charset>", "no-such-charset"},
    {"<?xml version='1.0' encoding='iso-8859-2'?><html>", "iso-8859-2"},
    {"<?xml version='1.0' encoding=\"iso-8859-2\"?><meta charset=utf-8>", "utf-8"},
    {"<?xml version='1.0'?><p encoding='utf-7'>", ""},
    {"\xEF\xBB\xBF<meta charset=iso-8859-1>", "utf-8"},
    {"\xFF\xFE<\0p\0>\0"sv, "unicode"},
    {"<\0m\0e\0t\0a\0 \0c\0h\0a\0r\0s\0e\0t\0=\0u\0t\0f\0-\0"
     "1\0"
     "6\0>\0"sv,
     "utf-16"},
    // A title in ISO-2022-JP whose second bytes would read as the end of the tag.
    {"<p title='\x1B$B<>'<\x1B(B'><meta charset=iso-2022-jp>", "iso-2022-jp"},
};

TEST(HtmlCharsetTest, FindsTheNameThatADocumentDeclares) {
  for (const NameCase& c : kNames) {
    EXPECT_EQ(HtmlCharset(asBytes(c.html)).name(), c.name) << c.html;
  }
}

TEST(HtmlCharsetTest, GivesTheCodePageADocumentIsIn) {
  EXPECT_EQ(HtmlCharset(asBytes("<meta charset=sjis>")).codePage(), 932);
  EXPECT_EQ(HtmlCharset(asBytes("<meta charset=unheard-of>")).codePage(), 0);
  EXPECT_EQ(HtmlCharset(asBytes("\xFE\xFF\0<"sv)).codePage(), 1201);
  EXPECT_EQ(HtmlCharset(asBytes("\0<\0p\0>"sv)).codePage(), 1201);
  EXPECT_EQ(HtmlCharset(asBytes("<\0\0\0p\0\0\0"sv)).codePage(), 65005);
}

TEST(HtmlCharsetTest, ReadsADeclarationOfUtf16InAsciiAsUtf8) {
  EXPECT_EQ(HtmlCharset(asBytes("<meta charset=utf-16>")).codePage(), 65001);
}

TEST(HtmlCharsetTest, SearchesTheHeadOnly) {
  const std::string far = std::string(kHtmlHeadBytes, ' ') + "<meta charset=utf-8>";
  EXPECT_EQ(HtmlCharset(asBytes(far)).name(), "");
  const std::string cut = std::string(kHtmlHeadBytes - 10, ' ') + "<meta charset=utf-8>";
  EXPECT_EQ(HtmlCharset(asBytes(cut)).name(), "");
}

std::string rewritten(std::string_view html, std::string_view name, int codePage = 0) {
  DataBuffer out;
  const std::size_t done = HtmlCharset(asBytes(html), codePage).rewrite(asBytes(html), name, out);
  return std::string(out.text()) + std::string(html.substr(done));
}

struct RewriteCase {
  std::string_view before, after;
};
const RewriteCase kRewrites[] = {
    {"<meta charset=sjis>x", "<meta charset=utf-8>x"},
    {"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=Shift_JIS\">x",
     "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">x"},
    {"<?xml version=\"1.0\" encoding=\"big5\"?><html><meta charset='big5'/></html>",
     "<?xml version=\"1.0\" encoding=\"utf-8\"?><html><meta charset='utf-8'/></html>"},
    {"<?xml version=\"1.0\" encoding=\"big5\"?><html/>",
     "<?xml version=\"1.0\" encoding=\"utf-8\"?><html/>"},
    {"<html><head lang=en><title>x</title></head>",
     "<html><head lang=en><meta charset=\"utf-8\"><title>x</title></head>"},
    {"<!DOCTYPE html>\n<html lang='de'>\n<title>x",
     "<!DOCTYPE html>\n<html lang='de'><meta charset=\"utf-8\">\n<title>x"},
    {"<!DOCTYPE html><p>x", "<!DOCTYPE html><meta charset=\"utf-8\"><p>x"},
    {"just text", "<meta charset=\"utf-8\">just text"},
    {"", "<meta charset=\"utf-8\">"},
    {"\xEF\xBB\xBF<meta charset=x>y", "<meta charset=utf-8>y"},
    {"<header><head>", "<meta charset=\"utf-8\"><header><head>"},
};

TEST(HtmlCharsetTest, RewritesEveryDeclarationOrAddsOne) {
  for (const RewriteCase& c : kRewrites) EXPECT_EQ(rewritten(c.before, "utf-8"), c.after);
}

TEST(HtmlCharsetTest, RewritesDocumentsThatAreNotAscii) {
  for (const int codePage : {1200, 1201, 65005, 65006, 37}) {
    const auto encoded = [codePage](std::string_view text) {
      DataBuffer bytes;
      EXPECT_TRUE(EncodingConvert().EncConvert(65001, codePage, text.data(), text.size(), bytes));
      return std::string(bytes.text());
    };
    EXPECT_EQ(rewritten(encoded("<html><meta charset='ebcdic'>\xC3\xA9"), "utf-8", codePage),
              encoded("<html><meta charset='utf-8'>\xC3\xA9"))
        << codePage;
    EXPECT_EQ(rewritten(encoded("<head>\xC3\xA9"), "utf-8", codePage),
              encoded("<head><meta charset=\"utf-8\">\xC3\xA9"))
        << codePage;
  }
}

TEST(HtmlCharsetTest, TellsMarksApart) {
  EXPECT_EQ(findByteOrderMark(asBytes("\xFF\xFE\0\0"sv)).codePage, 65005);
  EXPECT_EQ(findByteOrderMark(asBytes("\xFF\xFE\0\0"sv), 1201).codePage, 1200);
  EXPECT_EQ(findByteOrderMark(asBytes("\xFF\xFE\0a"sv)).codePage, 1200);
  EXPECT_EQ(findByteOrderMark(asBytes("\xEF\xBB"sv)).codePage, 0);
  EXPECT_TRUE(byteOrderMarkOf(1252).empty());
}

}  // namespace
}  // namespace zantrel

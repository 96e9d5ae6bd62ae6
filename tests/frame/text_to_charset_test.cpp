#include "frame/text_to_charset.h"

#include <gtest/gtest.h>

#include <string>

#include "core/charset/code_page.h"
#include "core/data_buffer.h"
#include "core/string_buffer.h"
#include "core/xstring.h"
#include "frame/logger.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

struct Outcome {
  bool success;
  std::string bytes;
  std::string log;
};

Outcome convert(std::string_view text, std::string_view charset,
                CharsetOrigin origin = CharsetOrigin::Argument) {
  DataBuffer out;
  Logger log;
  const bool success =
      textToCharset(XString(text), CharsetRequest::parse(charset), origin, out, log);
  StringBuffer shown;
  log.getText(shown);
  return {success, test::hex(out.text()), std::string(shown.view())};
}

TEST(TextToCharsetTest, WritesWhatTheCharsetHas) {
  const struct {
    const char* charset;
    const char* hex;
  } kRows[] = {
      {"utf-8", "c3a9"},
      {"windows-1252", "e9"},
      {" UTF-8 ", "c3a9"},
      {"bom:utf-8", "efbbbfc3a9"},
      {"BOM: utf-8", "efbbbfc3a9"},
      {"utf-16", "e900"},
      {"bom:utf-16", "fffee900"},
      {"bom:utf-16be", "feff00e9"},
      {"bom:utf-32", "fffe0000e9000000"},
      {"bom:utf-32be", "0000feff000000e9"},
      {"bom:windows-1252", "e9"},
  };
  for (const auto& row : kRows) {
    const Outcome outcome = convert("\u00e9", row.charset);
    EXPECT_TRUE(outcome.success) << row.charset;
    EXPECT_EQ(outcome.bytes, row.hex) << row.charset;
    EXPECT_EQ(outcome.log, "ZantrelLog:\r\n") << row.charset;
  }
}

TEST(TextToCharsetTest, Latin1IsWrittenAsWindows1252) {
  const Outcome outcome = convert("\u00e9\u20ac", "iso-8859-1");
  EXPECT_TRUE(outcome.success);
  EXPECT_EQ(outcome.bytes, "e980");
}

TEST(TextToCharsetTest, LossesAreLoggedWithTheirFigures) {
  const Outcome outcome = convert("a\u65e5b", "iso-8859-1");
  EXPECT_FALSE(outcome.success);
  EXPECT_EQ(outcome.bytes, "613f62");
  EXPECT_EQ(outcome.log,
            "ZantrelLog:\r\n  Character encoding conversion failed.\r\n  NumCharsIn: 3\r\n"
            "  Charset: 28591\r\n  ConvertedToNumBytes: 3\r\n");
}

TEST(TextToCharsetTest, TheHintComesOnlyWithTheCharsetProperty) {
  const Outcome outcome = convert("\u65e5", "us-ascii", CharsetOrigin::CharsetProperty);
  EXPECT_FALSE(outcome.success);
  EXPECT_EQ(outcome.log,
            "ZantrelLog:\r\n  Character encoding conversion failed.\r\n  NumCharsIn: 1\r\n"
            "  Charset: 20127\r\n  ConvertedToNumBytes: 1\r\n"
            "  Set the Charset property equal to an appropriate charset\r\n");
}

TEST(TextToCharsetTest, AnUnknownCharsetIsNamed) {
  for (const char* charset : {"klingon", "bom:klingon"}) {
    const Outcome outcome = convert("x", charset);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.bytes, "");
    EXPECT_EQ(outcome.log, "ZantrelLog:\r\n  Unknown charset.\r\n  Charset: klingon\r\n");
  }
}

}  // namespace
}  // namespace zantrel

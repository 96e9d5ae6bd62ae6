#include "core/log_base.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "core/string_buffer.h"
#include "core/xstring.h"
#include "frame/component.h"
#include "frame/logger.h"
#include "platform/clock.h"
#include "platform/error_text.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

class FixedClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override { return now; }
  SystemTime utcTime() const override { return {2008, 6, 2, 3, 9, 5, 3, 7}; }
  SystemTime localTime() const override { return {2008, 6, 2, 3, 2, 5, 3, 7}; }
  int utcOffsetMinutes() const override { return -420; }

  std::uint32_t now = 1'000'000;
};

class LogBaseTest : public ::testing::Test {
 protected:
  /// What was logged since the last call, without the root's line.
  std::string taken() {
    StringBuffer text;
    log.getText(text);
    log.clearLog();
    return std::string(text.view().substr(std::strlen("ZantrelLog:\r\n")));
  }

  FixedClock clock;
  ScopedClock scope{clock};
  Logger log;
};

TEST_F(LogBaseTest, LogsTextsInTheirUtf8Form) {
  XString text;
  text.setFromUnicode2(u"\u20ac");
  EXPECT_TRUE(log.logDataStr("price", text));
  EXPECT_TRUE(log.logErrorStr(text));
  EXPECT_FALSE(log.logDataStr(" ", text));
  EXPECT_EQ(taken(), "  price: \u20ac\r\n  \u20ac\r\n");
}

TEST_F(LogBaseTest, LogsBytesAsTextOrQuotedPrintable) {
  EXPECT_TRUE(log.logDataBytes("t", "abcdef", 3));
  EXPECT_TRUE(log.logDataBytes("t", "abc", 0));
  EXPECT_TRUE(log.logDataBytes("t", nullptr, 3));
  EXPECT_EQ(taken(), "  t: abc\r\n  t: \r\n  t: \r\n");
  EXPECT_TRUE(log.logBinary("t", "a=\r\n\xE9", 5));
  EXPECT_EQ(taken(), "  t: a=3D=0D=0A=E9\r\n");
  const std::string line(200, 'x');
  EXPECT_TRUE(log.logBinary("t", line.data(), 200));
  EXPECT_EQ(taken(), "  t: " + line + "\r\n");
  log.logBinary("t", nullptr, 3);
  log.logBinary("t", "abc", 0);
  EXPECT_EQ(taken(), "  No binary data to log\r\n  No binary data to log\r\n");
}

TEST_F(LogBaseTest, LogsTimes) {
  EXPECT_TRUE(log.logTimestamp(3));
  EXPECT_EQ(taken(), "  Timestamp-3: 9:05:03.007\r\n");
  EXPECT_TRUE(log.logTickCount("tick"));
  EXPECT_EQ(taken(), "  tick: f4240\r\n");
  log.logSystemTime("received", {2008, 6, 2, 3, 18, 5, 30, 0});
  EXPECT_EQ(taken(),
            "  received:\r\n    year: 2008\r\n    month: 6\r\n    day: 3\r\n    hour: 18\r\n"
            "    minutes: 5\r\n    seconds: 30\r\n"
            "    RFC822_DateTime: Tue, 03 Jun 2008 18:05:30 +0000\r\n");
}

TEST_F(LogBaseTest, LogsPlausibleElapsedTimesOnly) {
  log.logElapsed("e", 1'000'000);
  log.logElapsed("e", 999'958);
  EXPECT_EQ(taken(), "  e: Elapsed time: 0 millisec\r\n  e: Elapsed time: 42 millisec\r\n");
  log.logElapsed("e", 1'000'001);  // wrapped
  clock.now = 900'000'005;
  log.logElapsed("e", 5);  // stale
  EXPECT_EQ(taken(), "");
  log.logElapsed("e", 6);
  EXPECT_EQ(taken(), "  e: Elapsed time: 899999999 millisec\r\n");
}

TEST_F(LogBaseTest, LogsTheSystemsMessageForItsErrors) {
  log.logWindowsError(0);
  EXPECT_EQ(taken(), "");
  log.logWindowsError(5);
  EXPECT_EQ(taken(), "  WindowsError: " + systemErrorText(5) + "\r\n");
}

class Quiet final : public Component {};

TEST(LastErrorTest, LineEndsAreCrlfInEveryRendering) {
  Quiet component;
  component.log().logInfo("a\nb\rc\r\nd");
  XString text;
  component.get_LastErrorText(text);
  EXPECT_EQ(text.utf8(), "ZantrelLog:\r\n  a\r\nbc\r\nd\r\n");
  component.get_LastErrorXml(text);
  EXPECT_EQ(text.utf8(),
            "<ZantrelLog>\r\n<info><![CDATA[a\r\nbc\r\nd]]></info>\r\n</ZantrelLog>\r\n");
  component.get_LastErrorHtml(text);
  EXPECT_EQ(text.utf8(), "ZantrelLog:<blockquote>\r\na\r\nbc\r\nd<br>\r\n</blockquote>\r\n");
  component.GetTextLogX(text, false);
  EXPECT_EQ(text.utf8(), "ZantrelLog:\r\n  a\nb\rc\r\nd\r\n");
}

TEST(LastErrorTest, SavesTheXmlRenderingUnderATrimmedPath) {
  const test::TempFolder folder;
  Quiet component;
  component.log().logInfo("x");
  for (const char* blank : {"", "   ", "\t\r\n"})
    EXPECT_FALSE(component.SaveLastError(XString(blank)));
  EXPECT_TRUE(component.SaveLastError(XString("  " + (folder / "\u20ac.xml") + " ")));
  EXPECT_EQ(test::readFile(folder / "\u20ac.xml"),
            "<ZantrelLog>\r\n<info>x</info>\r\n</ZantrelLog>\r\n");
  EXPECT_FALSE(component.SaveLastError(XString(folder / "missing/x.xml")));
}

TEST(LastErrorTest, TheVersionIsOneConstant) {
  XString version;
  Quiet().get_Version(version);
  EXPECT_EQ(version.utf8(), "10.2.3");
}

}  // namespace
}  // namespace zantrel

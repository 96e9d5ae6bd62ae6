#include "frame/logger.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/log_null.h"
#include "core/storage.h"
#include "core/string_buffer.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

using Render = bool (LogBase::*)(StringBuffer&);

std::string rendered(LogBase& log, Render render) {
  StringBuffer out("old content");
  EXPECT_TRUE((log.*render)(out));
  return std::string(out.view());
}

std::string text(LogBase& log) {
  return rendered(log, &LogBase::getText);
}
std::string xml(LogBase& log) {
  return rendered(log, &LogBase::getXml);
}
std::string html(LogBase& log) {
  return rendered(log, &LogBase::getHtml);
}

struct Shape {
  const char* name;
  std::function<void(Logger&)> write;
  const char* text;
  const char* xml;
  const char* html;
};

void context(
    Logger& log, const char* name, const std::function<void()>& inside = [] {}) {
  log.enterContext(name, false);
  inside();
  log.leaveContext();
}

const Shape kShapes[] = {
    {"fresh", [](Logger&) {}, "ZantrelLog:\r\n", "<ZantrelLog>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\n</blockquote>\r\n"},
    {"one of each kind",
     [](Logger& log) {
       context(log, "Method", [&] {
         log.logData("DllDate", "Jan 10 2010");
         log.logInfo("an info");
         log.logError("an error");
         log.logXml("<b>kept & bare</b>");
       });
     },
     "ZantrelLog:\r\n  Method:\r\n    DllDate: Jan 10 2010\r\n    an info\r\n    an error\r\n"
     "    <b>kept & bare</b>\r\n",
     "<ZantrelLog>\r\n<Method>\r\n<DllDate>Jan 10 2010</DllDate>\r\n<info>an info</info>\r\n"
     "<error>an error</error>\r\n<b>kept & bare</b>\r\n</Method>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nMethod:<blockquote>\r\nDllDate: Jan 10 2010<br>\r\n"
     "an info<br>\r\nan error<br>\r\n&lt;b&gt;kept &amp; bare&lt;/b&gt;<br>\r\n</blockquote>\r\n"
     "</blockquote>\r\n"},
    {"escaping",
     [](Logger& log) {
       log.logData("t", "a<b>&\"quoted\" &amp;");
       log.logInfo("tab\tin");
       log.logError("line\nbreak");
     },
     "ZantrelLog:\r\n  t: a<b>&\"quoted\" &amp;\r\n  tab\tin\r\n  line\nbreak\r\n",
     "<ZantrelLog>\r\n<t><![CDATA[a<b>&\"quoted\" &amp;]]></t>\r\n<info><![CDATA[tab\tin]]></info>"
     "\r\n<error><![CDATA[line\nbreak]]></error>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nt: a&lt;b&gt;&amp;&quot;quoted&quot; &amp;amp;<br>\r\n"
     "tab\tin<br>\r\nline\nbreak<br>\r\n</blockquote>\r\n"},
    {"a value with a whole CDATA section is written bare, one with half of it is wrapped",
     [](Logger& log) {
       log.logData("t", "x<![CDATA[y]]>z");
       log.logData("t", "]]> only");
       log.logData("t", "quote\" and CR\r stay bare");
     },
     "ZantrelLog:\r\n  t: x<![CDATA[y]]>z\r\n  t: ]]> only\r\n  t: quote\" and CR\r stay bare\r\n",
     "<ZantrelLog>\r\n<t>x<![CDATA[y]]>z</t>\r\n<t><![CDATA[]]> only]]></t>\r\n"
     "<t>quote\" and CR\r stay bare</t>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nt: x&lt;![CDATA[y]]&gt;z<br>\r\nt: ]]&gt; only<br>\r\n"
     "t: quote&quot; and CR\r stay bare<br>\r\n</blockquote>\r\n"},
    {"an empty context nested two levels deep disappears, a method's own stays",
     [](Logger& log) { context(log, "A", [&] { context(log, "B"); }); }, "ZantrelLog:\r\n  A:\r\n",
     "<ZantrelLog>\r\n<A>\r\n</A>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nA:<blockquote>\r\n</blockquote>\r\n</blockquote>\r\n"},
    {"only the last child is pruned",
     [](Logger& log) {
       context(log, "A", [&] {
         log.enterContext("B", false);
         context(log, "C", [&] { log.logInfo("kept"); });
         log.leaveContext();
         context(log, "D");
         log.logInfo("after");
       });
     },
     "ZantrelLog:\r\n  A:\r\n    B:\r\n      C:\r\n        kept\r\n    after\r\n",
     "<ZantrelLog>\r\n<A>\r\n<B>\r\n<C>\r\n<info>kept</info>\r\n</C>\r\n</B>\r\n"
     "<info>after</info>\r\n</A>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nA:<blockquote>\r\nB:<blockquote>\r\nC:<blockquote>\r\nkept<br>\r\n"
     "</blockquote>\r\n</blockquote>\r\nafter<br>\r\n</blockquote>\r\n</blockquote>\r\n"},
    {"leaving at the root is ignored",
     [](Logger& log) {
       log.leaveContext();
       log.leaveContext();
       log.logInfo("x");
     },
     "ZantrelLog:\r\n  x\r\n", "<ZantrelLog>\r\n<info>x</info>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nx<br>\r\n</blockquote>\r\n"},
    {"a context without a name renders nothing",
     [](Logger& log) { context(log, nullptr, [&] { log.logInfo("unseen"); }); }, "ZantrelLog:\r\n",
     "<ZantrelLog>\r\n</ZantrelLog>\r\n", "ZantrelLog:<blockquote>\r\n</blockquote>\r\n"},
    {"numbers",
     [](Logger& log) {
       log.logDataLong("low", -2147483647 - 1);
       log.logData64("high", 9223372036854775807);
       log.logHex("hex", 0xABCDEF01u);
     },
     "ZantrelLog:\r\n  low: -2147483648\r\n  high: 9223372036854775807\r\n  hex: 0xabcdef01\r\n",
     "<ZantrelLog>\r\n<low>-2147483648</low>\r\n<high>9223372036854775807</high>\r\n"
     "<hex>0xabcdef01</hex>\r\n</ZantrelLog>\r\n",
     "ZantrelLog:<blockquote>\r\nlow: -2147483648<br>\r\nhigh: 9223372036854775807<br>\r\n"
     "hex: 0xabcdef01<br>\r\n</blockquote>\r\n"},
};

TEST(LoggerTest, RendersEveryShapeInThreeForms) {
  for (const Shape& shape : kShapes) {
    Logger log;
    shape.write(log);
    EXPECT_EQ(text(log), shape.text) << shape.name;
    EXPECT_EQ(xml(log), shape.xml) << shape.name;
    EXPECT_EQ(html(log), shape.html) << shape.name;
  }
}

TEST(LoggerTest, TrimsTagsAndTurnsTheirBlanksIntoUnderscores) {
  Logger log;
  EXPECT_TRUE(log.logData(" \t my tag  x\r\n", "v"));
  EXPECT_TRUE(log.logData("null", nullptr));
  EXPECT_EQ(text(log), "ZantrelLog:\r\n  my_tag__x: v\r\n  null: (NULL)\r\n");
}

TEST(LoggerTest, RefusesEmptyTagsInEveryTaggedOperation) {
  Logger log;
  for (const char* tag : {"", "   ", "\t\r\n ", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(log.logData(tag, "v"));
    EXPECT_FALSE(log.logDataLong(tag, 1));
    EXPECT_FALSE(log.logData64(tag, 1));
    EXPECT_FALSE(log.logHex(tag, 1));
    EXPECT_FALSE(log.logTickCount(tag));
  }
  EXPECT_EQ(text(log), "ZantrelLog:\r\n");
}

TEST(LoggerTest, IgnoresNullTextsAndReportsSuccess) {
  Logger log;
  EXPECT_TRUE(log.logError(nullptr));
  EXPECT_TRUE(log.logInfo(nullptr));
  EXPECT_TRUE(log.logXml(nullptr));
  EXPECT_EQ(text(log), "ZantrelLog:\r\n");
}

TEST(LoggerTest, ClearingDiscardsOpenContexts) {
  Logger log;
  log.enterContext("A", false);
  log.enterContext("B", true);
  log.logInfo("gone");
  log.clearLog();
  log.logInfo("new");
  EXPECT_EQ(text(log), "ZantrelLog:\r\n  new\r\n");
}

TEST(LoggerTest, AnyDepthIsRenderedAndReleasedWithoutRecursion) {
  Logger log;
  constexpr int kDepth = 20'000;
  for (int i = 0; i < kDepth; ++i) log.enterContext("c", false);
  log.logInfo("deep");
  const std::string deep = xml(log);
  EXPECT_EQ(deep.size(),
            std::string("<ZantrelLog>\r\n</ZantrelLog>\r\n<info>deep</info>\r\n").size() +
                kDepth * std::string("<c>\r\n</c>\r\n").size());
  for (int i = 0; i < kDepth; ++i) log.leaveContext();
  log.clearLog();
  EXPECT_EQ(text(log), "ZantrelLog:\r\n");
}

TEST(LoggerTest, DropsEntriesWithoutStorageAndStaysBalanced) {
  for (std::size_t successes = 0; successes < 40; ++successes) {
    Logger log;
    {
      const storage::ScopedAllocationFault fault(successes);
      for (int i = 0; i < 3; ++i) {
        context(log, "A", [&] {
          EXPECT_TRUE(log.logData("tag", "value"));
          context(log, "B", [&] { EXPECT_TRUE(log.logError("text")); });
        });
      }
    }
    const std::string whole = text(log);
    EXPECT_TRUE(whole.starts_with("ZantrelLog:\r\n")) << successes;
    log.clearLog();
    log.logInfo("works");
    EXPECT_EQ(text(log), "ZantrelLog:\r\n  works\r\n") << successes;
  }
}

TEST(LoggerTest, WithoutStorageForItsRootItKeepsNothingUntilCleared) {
  Logger log;
  {
    const storage::ScopedAllocationFault fault(0);
    log.clearLog();
  }
  log.enterContext("A", false);
  log.logInfo("lost");
  log.leaveContext();
  EXPECT_EQ(text(log), "");
  log.clearLog();
  log.logInfo("works");
  EXPECT_EQ(text(log), "ZantrelLog:\r\n  works\r\n");
}

TEST(LoggerTest, SavesTheXmlFormToAFile) {
  const test::TempFolder folder;
  Logger log;
  log.logInfo("saved \u20ac");
  EXPECT_TRUE(log.saveXml((folder / "log.xml").c_str()));
  EXPECT_EQ(test::readFile(folder / "log.xml"), xml(log));
  EXPECT_FALSE(log.saveXml((folder / "missing/log.xml").c_str()));
  EXPECT_FALSE(log.saveXml(""));
  EXPECT_FALSE(log.saveXml(nullptr));
}

TEST(LoggerTest, ThreadsMayWriteAndReadAtOnce) {
  Logger log;
  constexpr int kThreads = 4;
  constexpr int kEntries = 500;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&log] {
      StringBuffer out;
      for (int i = 0; i < kEntries; ++i) {
        log.logDataLong("n", i);
        if (i % 100 == 0) log.getText(out);
      }
    });
  for (std::thread& thread : threads) thread.join();
  StringBuffer out;
  log.getText(out);
  std::size_t lines = 0;
  for (const char c : out.view()) lines += c == '\n' ? 1 : 0;
  EXPECT_EQ(lines, 1u + kThreads * kEntries);
}

TEST(LogNullTest, DiscardsEverythingAndSucceeds) {
  LogNull log;
  EXPECT_TRUE(log.logError("x") && log.logData("", "x") && log.enterContext("c", false) &&
              log.leaveContext() && log.saveXml("/no such folder/file"));
  StringBuffer out("kept");
  EXPECT_TRUE(log.getText(out));
  EXPECT_EQ(out.view(), "kept");
}

}  // namespace
}  // namespace zantrel

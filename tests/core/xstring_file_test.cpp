#include <gtest/gtest.h>

#include <string>

#include "core/xstring.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

using test::RecordedLog;
using test::TempFolder;

TEST(XStringFileTest, ReadsAFileInItsCharsetAndObeysByteOrderMarks) {
  struct Case {
    std::string content;
    const char* charset;
    const char* expected;
  };
  const Case cases[] = {
      {"\xE4", "windows-1252", "\xC3\xA4"},
      {"\xEF\xBB\xBF\xC3\xA4", "utf-8", "\xC3\xA4"},
      {"\xEF\xBB\xBF\xC3\xA4", nullptr, "\xC3\xA4"},
      {std::string("\xFF\xFE\xE4\0", 4), "utf-8", "\xC3\xA4"},
      {std::string("\xFE\xFF\0\xE4", 4), "utf-16", "\xC3\xA4"},
      {std::string("\xFF\xFE\0\0\xE4\0\0\0", 8), "utf-32be", "\xC3\xA4"},
      {std::string("\xE4\0", 2), "utf-16", "\xC3\xA4"},
      {"\xEF\xBB\xBF", "iso-8859-1", "\xC3\xAF\xC2\xBB\xC2\xBF"},
      {"", "utf-8", ""},
  };
  const TempFolder folder;
  for (const Case& c : cases) {
    test::writeFile(folder / "text", c.content);
    RecordedLog log;
    XString text("old");
    EXPECT_TRUE(text.readFile((folder / "text").c_str(), c.charset, log)) << log.text();
    EXPECT_EQ(text.utf8(), c.expected);
  }
}

TEST(XStringFileTest, TellsWhyAFileCouldNotBeRead) {
  const TempFolder folder;
  RecordedLog log;
  XString text("old");
  EXPECT_FALSE(text.readFile((folder / "missing").c_str(), "utf-8", log));
  EXPECT_TRUE(text.isEmpty());
  EXPECT_TRUE(log.has("error: Failed to open file.\nfilePath: "));
  EXPECT_TRUE(log.has("WindowsError"));

  EXPECT_FALSE(text.readFile((folder / "missing").c_str(), "no-such-charset", log));
  EXPECT_TRUE(log.has("error: Unknown charset.\ncharset: no-such-charset\n"));

  test::writeFile(folder / "text", "a\xFFz");
  EXPECT_FALSE(text.readFile((folder / "text").c_str(), "utf-8", log));
  EXPECT_EQ(text.utf8(), "a\xEF\xBF\xBDz");
  EXPECT_TRUE(log.has("error: Character encoding conversion failed.\n"));
}

TEST(XStringFileTest, WritesAFileInACharsetWithOrWithoutAByteOrderMark) {
  const TempFolder folder;
  const std::string path = folder / "text";
  const XString text("\xC3\xA4");
  RecordedLog log;
  EXPECT_TRUE(text.writeToFile(path.c_str(), "windows-1252", log));
  EXPECT_EQ(test::readFile(path), "\xE4");
  EXPECT_TRUE(text.writeToFile(path.c_str(), "utf-16be", log));
  EXPECT_EQ(test::readFile(path), std::string("\0\xE4", 2));
  EXPECT_TRUE(text.saveToFile(path.c_str(), "utf-16be", log));
  EXPECT_EQ(test::readFile(path), std::string("\xFE\xFF\0\xE4", 4));
  EXPECT_TRUE(text.saveToFile(path.c_str(), "utf-8", log));
  EXPECT_EQ(test::readFile(path), "\xC3\xA4");
  EXPECT_TRUE(text.writeToFile(path.c_str(), "BOM:utf-8", log));
  EXPECT_EQ(test::readFile(path), "\xEF\xBB\xBF\xC3\xA4");
  EXPECT_EQ(log.text(), "");
}

TEST(XStringFileTest, KeepsTheOldFileWhenACharacterCannotBeWritten) {
  const TempFolder folder;
  const std::string path = folder / "text";
  test::writeFile(path, "old");
  RecordedLog log;
  EXPECT_FALSE(XString("\xE2\x82\xAC").writeToFile(path.c_str(), "iso-8859-2", log));
  EXPECT_FALSE(XString("x").writeToFile(path.c_str(), "no-such-charset", log));
  EXPECT_FALSE(XString("x").writeToFile((path + "/no/folder").c_str(), "utf-8", log));
  EXPECT_EQ(test::readFile(path), "old");
  EXPECT_TRUE(log.has("NumCharsIn: 1\nCharset: 28592\nConvertedToNumBytes: 1\n"));
}

TEST(DataBufferFileTest, LoadsAndSavesWholeFiles) {
  const TempFolder folder;
  const std::string path = folder / "data";
  DataBuffer data;
  for (int i = 0; i < 100'000; ++i) data.appendChar(static_cast<std::uint8_t>(i * 7));
  RecordedLog log;
  ASSERT_TRUE(data.saveToFileUtf8(path.c_str(), log)) << log.text();
  DataBuffer loaded;
  loaded.append("old", 3);
  ASSERT_TRUE(loaded.loadFileUtf8(path.c_str(), log)) << log.text();
  EXPECT_TRUE(loaded.equals(data));
  EXPECT_EQ(loaded.capacity(), 100'000U);

  EXPECT_FALSE(loaded.loadFileUtf8((path + ".missing").c_str(), log));
  EXPECT_EQ(loaded.getSize(), 0U);
  EXPECT_FALSE(loaded.loadFileUtf8(folder.path().c_str(), log));  // a folder is no file
  EXPECT_FALSE(loaded.loadFileUtf8(nullptr, log));
  EXPECT_FALSE(data.saveToFileUtf8(folder.path().c_str(), log));
}

}  // namespace
}  // namespace zantrel

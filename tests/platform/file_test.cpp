#include "platform/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "platform/error_text.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

using test::TempFolder;

OsError writeWhole(const std::string& path, std::string_view content) {
  OutputFile file;
  if (const OsError error = file.open(path)) return error;
  if (const OsError error = file.write(content.data(), content.size())) return error;
  return file.commit();
}

std::size_t filesIn(const TempFolder& folder) {
  const std::string& path = folder.path();
  const std::filesystem::directory_iterator files(
      std::filesystem::path(std::u8string(path.begin(), path.end())));
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST(FileTest, WritesAndReadsBackUnderAnyName) {
  const TempFolder folder;
  // Plain, within code page 1252, outside it, outside the basic plane, with a name of two parts.
  for (const char* name :
       {"plain.txt", "caf\u00e9 \u20ac.txt", "\u0416\u65e5\u672c.txt", "\U0001F600", "a b'c.d"}) {
    const std::string path = folder / name;
    EXPECT_FALSE(fileExists(path)) << name;
    ASSERT_EQ(writeWhole(path, "content"), 0u) << name;
    EXPECT_TRUE(fileExists(path)) << name;
    EXPECT_EQ(test::readFile(path), "content") << name;

    InputFile in;
    ASSERT_EQ(in.open(path), 0u) << name;
    EXPECT_EQ(in.size(), 7);
    char buffer[16];
    std::size_t got = 0;
    EXPECT_EQ(in.read(buffer, 4, got), 0u);
    EXPECT_EQ(std::string(buffer, got), "cont");
    EXPECT_EQ(in.seek(5), 0u);
    EXPECT_EQ(in.read(buffer, sizeof buffer, got), 0u);
    EXPECT_EQ(std::string(buffer, got), "nt");
    EXPECT_EQ(in.read(buffer, sizeof buffer, got), 0u);
    EXPECT_EQ(got, 0u);
    in.close();
    EXPECT_EQ(removeFile(path), 0u) << name;
    EXPECT_FALSE(fileExists(path)) << name;
  }
}

TEST(FileTest, ReachesPathsBeyondTheClassicLimit) {
  const TempFolder folder;
  std::string path = folder.path();
  for (int i = 0; i < 3; ++i) path += "/" + std::string(100, static_cast<char>('a' + i));
#ifdef _WIN32
  std::string prefixed = "\\\\?\\" + path;
  std::replace(prefixed.begin(), prefixed.end(), '/', '\\');
  std::filesystem::create_directories(std::u8string(prefixed.begin(), prefixed.end()));
#else
  std::filesystem::create_directories(path);
#endif
  path += "/file";
  ASSERT_EQ(writeWhole(path, "far away"), 0u);
  InputFile in;
  ASSERT_EQ(in.open(path), 0u);
  EXPECT_EQ(in.size(), 8);
}

TEST(FileTest, WithoutCommitTheOldContentStays) {
  const TempFolder folder;
  const std::string path = folder / "file";
  test::writeFile(path, "old");
  {
    OutputFile file;
    ASSERT_EQ(file.open(path), 0u);
    ASSERT_EQ(file.write("new", 3), 0u);
    EXPECT_EQ(test::readFile(path), "old");
  }
  EXPECT_EQ(test::readFile(path), "old");
  EXPECT_EQ(filesIn(folder), 1u);
}

TEST(FileTest, CommitReplacesTheOldContentAndLeavesNothingElse) {
  const TempFolder folder;
  const std::string path = folder / "file";
  test::writeFile(path, "a longer old content");
  ASSERT_EQ(writeWhole(path, "new"), 0u);
  EXPECT_EQ(test::readFile(path), "new");
  EXPECT_EQ(filesIn(folder), 1u);
}

TEST(FileTest, FailuresAreTheSystemsOwn) {
  const TempFolder folder;
  InputFile in;
  OutputFile out;
  const OsError missing = in.open(folder / "missing");
  EXPECT_NE(missing, 0u);
  EXPECT_FALSE(in.isOpen());
  EXPECT_FALSE(systemErrorText(missing).empty());
  EXPECT_NE(in.open(folder.path()), 0u) << "a folder is no file";
  EXPECT_NE(in.open(""), 0u);
  EXPECT_NE(in.open(folder / std::string_view("a\0b", 3)), 0u);
  EXPECT_NE(out.open(""), 0u);
  EXPECT_NE(out.open(folder.path()), 0u);
  EXPECT_NE(out.open(folder / "no such folder/file"), 0u);
  EXPECT_NE(out.write("x", 1), 0u) << "not open";
  EXPECT_NE(out.commit(), 0u) << "not open";
  EXPECT_EQ(filesIn(folder), 0u);
}

TEST(FileTest, ReadOnlyFilesAreNotReplaced) {
#ifndef _WIN32
  if (test::runProgram({"id", "-u"}).value_or("") == "0\n") GTEST_SKIP() << "root may write all";
#endif
  const TempFolder folder;
  const std::string path = folder / "file";
  test::writeFile(path, "old");
  namespace fs = std::filesystem;
  fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  EXPECT_NE(writeWhole(path, "new"), 0u);
  EXPECT_EQ(test::readFile(path), "old");
  fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
}

TEST(FileTest, MovedFilesStayOpen) {
  const TempFolder folder;
  OutputFile first;
  ASSERT_EQ(first.open(folder / "file"), 0u);
  OutputFile second = std::move(first);
  EXPECT_TRUE(second.isOpen());
  ASSERT_EQ(second.write("x", 1), 0u);
  EXPECT_EQ(second.commit(), 0u);
  EXPECT_FALSE(second.isOpen());
}

}  // namespace
}  // namespace zantrel

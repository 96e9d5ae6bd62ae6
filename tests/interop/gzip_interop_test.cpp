// gzip data and tar archives against the programs gzip and tar and Python's modules.

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "compress/cls_gzip.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

namespace fs = std::filesystem;

/// Texts, noise, runs and nothing.
std::vector<std::string> samples() {
  std::mt19937 random(3);
  std::string noise, text;
  while (noise.size() < 200000) noise += static_cast<char>(random());
  while (text.size() < 300000) text += std::to_string(random() % 5000) + " green bottles\n";
  return {"", "a", text, noise, std::string(1000000, 'z'), text + noise + text};
}

TEST(GzipInteropTest, GzipAndPythonReadWhatWeWriteAtEveryLevel) {
  if (!haveProgram("gzip")) GTEST_SKIP() << "gzip is not installed";
  const TempFolder folder;
  for (const std::string& text : samples()) {
    for (int level = 0; level <= 9; ++level) {
      ClsGzip gzip;
      ASSERT_TRUE(gzip.put_DeflateLevel(level));
      gzip.settings().filename.setFromUtf8("name");
      writeFile(folder / "plain", text);
      ASSERT_TRUE(gzip.CompressFile(XString(folder / "plain"), XString(folder / "p.gz"), nullptr));
      EXPECT_TRUE(runProgram({"gzip", "-t", folder / "p.gz"})) << level;
      const auto back = runProgram({"gzip", "-dc", folder / "p.gz"});
      EXPECT_TRUE(back && *back == text) << level;
      if (level != 6 || !haveProgram("python3")) continue;
      const auto python = runProgram({"python3", "-c",
                                      "import gzip,sys;sys.stdout.buffer.write(gzip.open(" +
                                          ("'" + folder / "p.gz" + "').read())")});
      EXPECT_TRUE(python && *python == text);
    }
  }
}

TEST(GzipInteropTest, WeReadWhatGzipWrites) {
  if (!haveProgram("gzip")) GTEST_SKIP() << "gzip is not installed";
  const TempFolder folder;
  for (const std::string& text : samples()) {
    writeFile(folder / "plain", text);
    for (const char* level : {"-1", "-6", "-9"}) {
      const auto packed = runProgram({"gzip", "-c", level, folder / "plain"});
      ASSERT_TRUE(packed);
      DataBuffer in, out;
      in.append(*packed + *packed);
      ClsGzip gzip;
      ASSERT_TRUE(gzip.UncompressMemory(in, out, nullptr)) << logOf(gzip);
      EXPECT_TRUE(out.text() == text + text);
      ASSERT_TRUE(gzip.ExamineMemory(in, nullptr));
      EXPECT_STREQ(gzip.settings().filename.getUtf8(), "plain");
    }
  }
}

/// What stands in a folder, with content, link targets, rights and times of files, a line each.
std::string listing(const std::string& folder) {
  const auto text = runProgram(
      {"sh", "-c",
       "cd \"$1\" && find . -mindepth 1 -printf '%P %y %l' \\( -type f -printf ' %m %Ts %s' -o "
       "-type d -printf ' %m' -o -true \\) -printf '\\n' | LC_ALL=C sort && find . -type f -print0 "
       "| LC_ALL=C sort -z | xargs -0 sha256sum",
       "sh", folder});
  return text.value_or("failed");
}

TEST(GzipInteropTest, UnpacksTreesAsTarDoes) {
  if (!haveProgram("tar")) GTEST_SKIP() << "tar is not installed";
  const TempFolder folder;
  const std::string tree = folder / "tree";
  const std::string deep = tree + "/" + std::string(60, 'd') + "/" + std::string(60, 'e');
  fs::create_directories(deep);
  fs::create_directory(tree + "/empty");
  int number = 0;
  for (const std::string& text : samples()) writeFile(tree + "/f" + std::to_string(number++), text);
  writeFile(deep + "/" + std::string(120, 'n') + " \xC3\xA4\\", "far down");
  writeFile(tree + "/run", "#!/bin/sh\n");
  fs::permissions(tree + "/run", fs::perms(0755));
  fs::permissions(tree + "/f1", fs::perms(0400));
  fs::create_symlink("f2", tree + "/link");
  fs::create_symlink("../f1", tree + "/empty/up");
  fs::create_hard_link(tree + "/f2", tree + "/same");
  for (const char* format : {"ustar", "gnu", "pax", "posix"}) {
    SCOPED_TRACE(format);
    const std::string archive = folder / (std::string(format) + ".tgz");
    const std::string ours = folder / (std::string(format) + "-ours");
    const std::string theirs = folder / (std::string(format) + "-theirs");
    // The oldest format cannot hold the longest name.
    runProgram({"tar", "-czf", archive, std::string("--format=") + format, "-C", tree, "."});
    fs::create_directory(theirs);
    ASSERT_TRUE(runProgram({"tar", "-xzf", archive, "-C", theirs}));
    ClsGzip gzip;
    ASSERT_TRUE(gzip.UnTarGz(XString(archive), XString(ours), nullptr)) << logOf(gzip);
    EXPECT_EQ(listing(ours), listing(theirs));
  }
}

TEST(GzipInteropTest, SeesHolesThatGnuTarMarksAndLeavesSuchFilesOut) {
  if (!haveProgram("tar")) GTEST_SKIP() << "tar is not installed";
  const TempFolder folder;
  fs::create_directory(folder / "tree");
  writeFile(folder / "tree/holes", "x");
  fs::resize_file(folder / "tree/holes", 10000000);
  writeFile(folder / "tree/plain", "plain");
  for (const char* format : {"gnu", "pax"}) {
    const std::string archive = folder / "sparse.tgz";
    ASSERT_TRUE(runProgram({"tar", "-czSf", archive, std::string("--format=") + format, "-C",
                            folder / "tree", "holes", "plain"}));
    ClsGzip gzip;
    const std::string out = folder / format;
    ASSERT_TRUE(gzip.UnTarGz(XString(archive), XString(out), nullptr)) << logOf(gzip);
    EXPECT_NE(logOf(gzip).find("A sparse file is left out."), std::string::npos);
    EXPECT_EQ(readFile(out + "/plain"), "plain");
    EXPECT_FALSE(fs::exists(out + "/holes"));
    EXPECT_FALSE(fs::exists(out + "/GNUSparseFile.0"));
  }
}

}  // namespace
}  // namespace zantrel::test

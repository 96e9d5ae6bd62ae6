#include "compress/tar_unpacker.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "compress/tar_archives.h"
#include "platform/file_tree.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

namespace fs = std::filesystem;

/// Unpacks archives into the folder "out" beside a file that is none of theirs.
class TarUnpackerTest : public testing::Test {
 protected:
  TarUnpackerTest() { writeFile(folder_ / "secret", "untouched"); }

  bool unpack(const std::string& archive) {
    log_ = RecordedLog();
    TarUnpacker unpacker(folder_ / "out", log_);
    TarReader reader(unpacker);
    const bool read = unpacker.makeTarget() && reader.write(archive, log_) && reader.finish(log_);
    return unpacker.finish() && read;
  }
  std::string content(const std::string& name) { return readFile(folder_ / ("out/" + name)); }
  /// All that stands in "out", sorted, folders with a "/" behind them.
  std::set<std::string> tree() {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / "out")) {
      const bool isFolder = !entry.is_symlink() && entry.is_directory();
      names.insert(fs::relative(entry.path().parent_path(), folder_ / "out").generic_string() +
                   "/" + entry.path().filename().generic_string() + (isFolder ? "/" : ""));
    }
    return names;
  }
  void expectNothingOutside() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      names.insert(entry.path().filename().generic_string());
    }
    names.erase("out");
    EXPECT_EQ(names, std::set<std::string>{"secret"});
    EXPECT_EQ(readFile(folder_ / "secret"), "untouched");
    EXPECT_EQ(fs::hard_link_count(folder_ / "secret"), 1u);
  }

  TempFolder folder_;
  RecordedLog log_;
};

TEST_F(TarUnpackerTest, UnpacksFilesFoldersAndLinks) {
  ASSERT_TRUE(unpack(tarMember({"top.txt", '0', "top"}) +
                     tarMember({"./a//b/./deep", '0', "deep"}) +
                     tarMember({.name = "a/", .type = '5', .mode = 0755, .modified = 12345}) +
                     tarMember({"a/same", '1', "", "top.txt"}) + tarMember({"empty/", '5'}) +
                     tarMember({"./", '5'}) + kTarEnd))
      << log_.text();
  EXPECT_EQ(tree(),
            (std::set<std::string>{"./a/", "./empty/", "./top.txt", "a/b/", "a/b/deep", "a/same"}))
      << "see the names above";
  EXPECT_EQ(content("top.txt"), "top");
  EXPECT_EQ(content("a/same"), "top");
  std::int64_t seconds = 0;
  EXPECT_EQ(fileTime(folder_ / "out/top.txt", seconds), 0u);
  EXPECT_EQ(seconds, 1000000000);
#if !defined(_WIN32)  // where the standard library neither counts links nor sets folders' times
  EXPECT_EQ(fs::hard_link_count(folder_ / "out/top.txt"), 2u);
  EXPECT_EQ(fileTime(folder_ / "out/a", seconds), 0u);
  EXPECT_EQ(seconds, 12345);
#endif
}

TEST_F(TarUnpackerTest, ReplacesWhatAnEarlierUnpackingLeft) {
  ASSERT_TRUE(unpack(tarMember({"a/x", '0', "old"})));
  ASSERT_TRUE(unpack(tarMember({"a/x", '0', "new"}) + tarMember({"a/x", '0', "newer"})));
  EXPECT_EQ(content("a/x"), "newer");
}

TEST_F(TarUnpackerTest, LeavesOutTheLeadingSlashOfNames) {
  ASSERT_TRUE(unpack(tarMember({"//etc/x", '0', "x"}) + tarMember({"/y", '0', "y"})));
  EXPECT_EQ(content("etc/x"), "x");
  EXPECT_EQ(content("y"), "y");
  EXPECT_TRUE(log_.has("info: A leading slash of names is left out."));
  expectNothingOutside();
}

TEST_F(TarUnpackerTest, RefusesNamesThatLeadElsewhereAndUnpacksTheRest) {
  for (const char* name : {"../x", "a/../../x", "a/..", "..", "/../x", "a/b/../c", "./../secret"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(unpack(tarMember({name, '0', "bad"}) + tarMember({name, '5'}) +
                        tarMember({name, '2', "", "good"}) + tarMember({"hard", '1', "", name}) +
                        tarMember({"good", '0', "good"})));
    EXPECT_TRUE(log_.has("error: An entry whose name leads elsewhere is refused."));
    EXPECT_TRUE(log_.has("numRefused: 4"));
    EXPECT_EQ(content("good"), "good");
    expectNothingOutside();
  }
}

TEST_F(TarUnpackerTest, LeavesOutDevicesPipesAndSparseFiles) {
  EXPECT_TRUE(unpack(tarMember({"null", '3'}) + tarMember({"disk", '4'}) +
                     tarMember({"pipe", '6'}) + tarMember({"what", 'Z', "data"}) +
                     tarMember({"holes", 'S', "data"})));
  EXPECT_TRUE(tree().empty());
  EXPECT_TRUE(log_.has("info: An entry that is neither file, folder nor link is left out."));
  EXPECT_TRUE(log_.has("info: A sparse file is left out."));
}

TEST_F(TarUnpackerTest, LogsOfAnyNumberOfOddEntriesABoundedNumberOfLines) {
  std::string archive;
  for (int i = 0; i < 5000; ++i) archive += tarMember({"../x"}) + tarMember({"p", '6'});
  EXPECT_FALSE(unpack(archive));
  EXPECT_LT(log_.text().size(), 20000u);
  EXPECT_TRUE(log_.has("numRefused: 5000"));
}

#ifndef _WIN32  // making links takes a privilege there

TEST_F(TarUnpackerTest, MakesLinksThatStayInside) {
  ASSERT_TRUE(unpack(tarMember({"a/b/up", '2', "", "../../x"}) + tarMember({"x", '0', "x"}) +
                     tarMember({"here", '2', "", "./a/b"}) + tarMember({"dot", '2', "", "."})))
      << log_.text();
  EXPECT_EQ(content("a/b/up"), "x");
  EXPECT_EQ(fs::read_symlink(folder_ / "out/here"), "./a/b");
}

TEST_F(TarUnpackerTest, RefusesLinksThatMayLeadOutside) {
  for (const char* target : {"/etc/passwd", "..", "../secret", "a/../../secret", "a/..", ""}) {
    EXPECT_FALSE(unpack(tarMember({"link", '2', "", target}))) << target;
    EXPECT_TRUE(log_.has("error: A link that may lead outside the folder is refused."));
  }
  EXPECT_FALSE(unpack(tarMember({"a/b/link", '2', "", "../../../secret"})));
  EXPECT_EQ(tree().count("a/b/link"), 0u);
}

TEST_F(TarUnpackerTest, NeverWritesThroughALink) {
  fs::create_directory(folder_ / "out");
  fs::create_directory_symlink("..", folder_ / "out/up");
  fs::create_symlink("../secret", folder_ / "out/file");
  EXPECT_FALSE(unpack(tarMember({"up/secret", '0', "bad"}) + tarMember({"up/", '5'}) +
                      tarMember({"up/new/x", '0', "bad"}) +
                      tarMember({"hard", '1', "", "up/secret"}) +
                      tarMember({"hard2", '1', "", "file"}) + tarMember({"file", '0', "mine"})));
  EXPECT_TRUE(log_.has("Something that is no folder stands in the way."));
  EXPECT_TRUE(log_.has("A hard link is to something that is not there."));
  expectNothingOutside();
  EXPECT_EQ(content("file"), "mine");
  EXPECT_FALSE(fs::is_symlink(folder_ / "out/file"));
}

TEST_F(TarUnpackerTest, NoChainOfLinksLeadsOutside) {
  // Each target stays inside when it is read by itself.
  unpack(tarMember({"d/e/", '5'}) + tarMember({"d/e/up", '2', "", "../.."}) +
         tarMember({"way", '2', "", "d/e/up/.."}) + tarMember({"way2", '2', "", "d/e/up"}) +
         tarMember({"d/e/up/secret", '0', "bad"}) + tarMember({"way/secret", '0', "bad"}) +
         tarMember({"way2/../secret", '0', "bad"}));
  expectNothingOutside();
  const fs::path inside = fs::canonical(folder_ / "out");
  for (const auto& entry : fs::recursive_directory_iterator(folder_ / "out")) {
    const std::string target = fs::weakly_canonical(entry.path()).generic_string();
    EXPECT_EQ(target.find(inside.generic_string()), 0u) << entry.path() << " leads to " << target;
  }
}

TEST_F(TarUnpackerTest, SetsRightsButNoneThatTheProcessWithholds) {
  ASSERT_TRUE(unpack(tarMember({.name = "run", .data = "x", .mode = 06755}) +
                     tarMember({.name = "own", .data = "x", .mode = 0600}) +
                     tarMember({.name = "shut/", .type = '5', .mode = 0555}) +
                     tarMember({.name = "shut/in", .data = "x", .mode = 0444})))
      << log_.text();
  const auto mode = [&](const char* name) {
    return static_cast<unsigned>(fs::status(folder_ / ("out/" + std::string(name))).permissions());
  };
  EXPECT_EQ(mode("run") & 07700u, 0700u);
  EXPECT_EQ(mode("own"), 0600u);
  EXPECT_EQ(mode("shut/in"), 0444u);
  EXPECT_EQ(mode("shut") & 0200u, 0u);
  fs::permissions(folder_ / "out/shut", fs::perms::owner_all);
}

#endif

}  // namespace
}  // namespace zantrel::test

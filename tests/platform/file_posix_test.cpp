#ifndef _WIN32

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file.h"
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

mode_t modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

TEST(PosixFileTest, KeepsTheModeOfTheReplacedFile) {
  const TempFolder folder;
  const std::string path = folder / "file";
  test::writeFile(path, "old");
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  ASSERT_EQ(writeWhole(path, "new"), 0u);
  EXPECT_EQ(modeOf(path), 0640u);
}

TEST(PosixFileTest, NewFilesObeyTheUmask) {
  const TempFolder folder;
  const mode_t before = ::umask(027);
  const OsError error = writeWhole(folder / "file", "new");
  ::umask(before);
  ASSERT_EQ(error, 0u);
  EXPECT_EQ(modeOf(folder / "file"), 0640u);
}

TEST(PosixFileTest, FollowsSymbolicLinksAlsoToFilesStillToBeMade) {
  const TempFolder folder;
  ASSERT_EQ(::mkdir((folder / "there").c_str(), 0700), 0);
  const std::string target = folder / "there/file";
  ASSERT_EQ(::symlink("there/file", (folder / "link").c_str()), 0);
  for (const char* content : {"first", "second"}) {
    ASSERT_EQ(writeWhole(folder / "link", content), 0u);
    EXPECT_EQ(test::readFile(target), content);
  }
  char buffer[64];
  EXPECT_EQ(::readlink((folder / "link").c_str(), buffer, sizeof buffer), 10);
}

TEST(PosixFileTest, RefusesLinksThatGoInACircle) {
  const TempFolder folder;
  ASSERT_EQ(::symlink("b", (folder / "a").c_str()), 0);
  ASSERT_EQ(::symlink("a", (folder / "b").c_str()), 0);
  EXPECT_EQ(writeWhole(folder / "a", "x"), static_cast<OsError>(ELOOP));
}

TEST(PosixFileTest, AFullDeviceIsReported) {
  if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
  EXPECT_EQ(writeWhole("/dev/full", "x"), static_cast<OsError>(ENOSPC));
  EXPECT_EQ(writeWhole("/dev/null", "x"), 0u);
}

TEST(PosixFileTest, AWriteThatFailsHalfwayLeavesTheOldFile) {
  const TempFolder folder;
  const std::string path = folder / "file";
  test::writeFile(path, "old");
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small{1000, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const OsError error = writeWhole(path, std::string(100'000, 'x'));
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(error, static_cast<OsError>(EFBIG));
  EXPECT_EQ(test::readFile(path), "old");
}

TEST(PosixFileTest, PipesAreWrittenDirectlyAndHaveNoSize) {
  const TempFolder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  OsError written = 1;
  std::thread writer([&] { written = writeWhole(path, "through the pipe"); });
  InputFile in;
  ASSERT_EQ(in.open(path), 0u);
  EXPECT_EQ(in.size(), -1);
  std::string all;
  char buffer[8];
  for (std::size_t got = 1; got > 0; all.append(buffer, got))
    ASSERT_EQ(in.read(buffer, sizeof buffer, got), 0u);
  writer.join();
  EXPECT_EQ(written, 0u);
  EXPECT_EQ(all, "through the pipe");
}

TEST(PosixFileTest, APipeWithoutReaderIsAnErrorNotASignal) {
  const TempFolder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  OutputFile out;
  ASSERT_EQ(out.open(path), 0u);
  ::close(reader);
  EXPECT_EQ(out.write("x", 1), static_cast<OsError>(EPIPE));
}

TEST(PosixFileTest, TheProcessFilesAreReadable) {
  InputFile in;
  ASSERT_EQ(in.open("/proc/self/status"), 0u);
  char buffer[16];
  std::size_t got = 0;
  EXPECT_EQ(in.read(buffer, sizeof buffer, got), 0u);
  EXPECT_GT(got, 0u);
}

}  // namespace
}  // namespace zantrel

#endif

// Memory and progress of conversions of files that are larger than memory should ever hold.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "charset/cls_charset.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

/// The most memory that this process has held so far, in KiB; 0 where the system does not tell.
long peakMemoryKib() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
  }
  return 0;
}

TEST(LargeFileTest, ConvertingTwoGigabytesKeepsBelowTwentyMegabytes) {
  if (peakMemoryKib() == 0) GTEST_SKIP() << "the system does not tell its peak memory";
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers have memory of their own";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  GTEST_SKIP() << "sanitizers have memory of their own";
#endif
#endif
  const test::TempFolder folder;
  const std::string path = folder / "large";
  // Text with holes: the file takes little room on the disk.
  test::writeFile(path, "caf\xE9 ");
  std::filesystem::resize_file(path, std::uintmax_t{2} << 30);
  ClsCharset charset;
  charset.settings().fromCharset.setFromUtf8("windows-1252");
  charset.settings().toCharset.setFromUtf8("utf-8");
  ASSERT_TRUE(charset.ConvertFile(XString(path), XString("/dev/null"), nullptr));
  ASSERT_TRUE(charset.VerifyFile(XString("windows-1252"), XString(path), nullptr));
  EXPECT_LT(peakMemoryKib(), 20 * 1024);
}

}  // namespace
}  // namespace zantrel

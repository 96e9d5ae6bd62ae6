// gzip beyond 4 GB: the header's size counts modulo 2^32, and memory must not grow with the file.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "compress/cls_gzip.h"
#include "frame/progress_event.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

struct SizeSink final : ProgressEvent {
  std::string size;
  void ProgressInfo(const char* name, const char* value) override {
    if (std::string(name) == "uncompressedSize") size = value;
  }
};

TEST(GzipLargeTest, FilesBeyondFourGigabytesComeBack) {
  constexpr std::uintmax_t kSize = (std::uintmax_t{4} << 30) + 12345;
  const test::TempFolder folder;
  // A file of holes takes no room on the disk; its end is not zero.
  test::writeFile(folder / "large", "start");
  std::filesystem::resize_file(folder / "large", kSize - 3);
  {
    const auto end = test::runProgram({"sh", "-c", "printf end >> \"$1\"", "sh", folder / "large"});
    if (!end) GTEST_SKIP() << "there is no shell";
  }
  ClsGzip gzip;
  ASSERT_TRUE(gzip.put_DeflateLevel(1));
  ASSERT_TRUE(gzip.CompressFile(XString(folder / "large"), XString(folder / "packed"), nullptr));
  SizeSink sink;
  ASSERT_TRUE(gzip.ExamineFile(XString(folder / "packed"), &sink));
  EXPECT_EQ(sink.size, std::to_string(kSize));
  if (test::haveProgram("gzip")) {
    EXPECT_TRUE(test::runProgram({"gzip", "-t", folder / "packed"}));
  }
  ASSERT_TRUE(gzip.UncompressFile(XString(folder / "packed"), XString("/dev/null"), nullptr));
}

}  // namespace
}  // namespace zantrel

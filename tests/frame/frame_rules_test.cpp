#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/test_data.h"

namespace zantrel {
namespace {

TEST(FrameRulesTest, NobodyOutsideTheFrameClearsALog) {
  namespace fs = std::filesystem;
  const fs::path sources = fs::path(ZANTREL_SOURCE_DIR) / "src";
  std::size_t callers = 0;
  for (const auto& entry : fs::recursive_directory_iterator(sources)) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".cpp" && extension != ".h") continue;
    const std::string code = test::readFile(entry.path().string());
    const bool calls = code.find(".clearLog(") != std::string::npos ||
                       code.find("->clearLog(") != std::string::npos;
    if (!calls) continue;
    ++callers;
    EXPECT_EQ(entry.path().parent_path().filename(), "frame") << entry.path();
  }
  EXPECT_GT(callers, 0u) << "the search itself found nothing";
}

}  // namespace
}  // namespace zantrel

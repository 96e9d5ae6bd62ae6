#include <gtest/gtest.h>

#include <string>

#include "charset/conversion.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

/// Python's escapes: \xNN is the character U+00NN, not a byte.
std::string characters(const std::string& escaped) {
  std::string text;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    if (escaped.compare(i, 2, "\\\\") == 0) {
      text += "\\\\";
      ++i;
    } else if (escaped.compare(i, 2, "\\x") == 0) {
      text += "\\u00";
      ++i;
    } else {
      text += escaped[i];
    }
  }
  return unescape(text);
}

TEST(CharsetCorpusTest, FilesConvertToTheirUtf8FormAndBack) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  const auto rows = readTable(*corpus + "/charsets/INDEX.tsv");
  ASSERT_GT(rows.size(), 1u);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const std::string bytes = readFile(*corpus + "/charsets/" + rows[i].at(0));
    const int page = std::stoi(rows[i].at(1));
    const std::string text = readFile(*corpus + "/charsets/" + rows[i].at(2));
    for (const std::size_t piece : {std::size_t{1} << 30, std::size_t{1000}, std::size_t{1}}) {
      const Streamed decoded = convertInPieces(page, 65001, bytes, piece);
      EXPECT_EQ(decoded.bytes, text) << rows[i][0];
      EXPECT_EQ(decoded.invalid, 0u);
      const Streamed encoded = convertInPieces(65001, page, text, piece);
      EXPECT_EQ(encoded.bytes, bytes) << rows[i][0];
      EXPECT_EQ(encoded.unmappable, 0u);
    }
  }
}

TEST(CharsetCorpusTest, ShortSamplesHold) {
  const auto corpus = corpusFolder();
  if (!corpus) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  const auto rows = readTable(*corpus + "/charsets/unicode_and_stateful.tsv");
  ASSERT_GT(rows.size(), 1u);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const int page = std::stoi(rows[i].at(0));
    const std::string text = characters(rows[i].at(1));
    const std::string bytes = unhex(rows[i].at(2));
    if (page != 65001) {
      EXPECT_EQ(convert(page, 65001, bytes).bytes, text) << rows[i][0] << " " << rows[i][2];
    } else {
      EXPECT_EQ(convert(65001, 1200, bytes).bytes, convert(65001, 1200, text).bytes);
    }
    if (rows[i].at(3) == "both") {
      EXPECT_EQ(hex(convert(65001, page, text).bytes), hex(bytes));
    }
  }
}

}  // namespace
}  // namespace zantrel::test

// Dates that other mail libraries and the standards publish, with what they mean.

#include <gtest/gtest.h>

#include "core/date_parser.h"
#include "core/string_buffer.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

TEST(DatesCorpusTest, ReadsPublishedDatesAsPublishedOrAsDefined) {
  const auto folder = test::corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS names no folder";
  const auto rows = test::readTable(*folder + "/headers/dates.tsv");
  int compared = 0;
  for (const auto& row : rows) {
    if (row.size() < 4 || (row[2] != "agrees" && row[2] != "differs")) continue;
    const std::string& expected = row[2] == "agrees" ? row[1] : row[3];
    StringBuffer found;
    SystemTime utc;
    if (DateParser().parseDate(test::unescape(row[0]), utc)) {
      DateParser().format("%Y-%m-%dT%H:%M:%SZ", utc, found);
    } else {
      found.append("(refused)");
    }
    EXPECT_EQ(found.view(), expected) << row[0];
    ++compared;
  }
  EXPECT_GT(compared, 50);
}

}  // namespace
}  // namespace zantrel

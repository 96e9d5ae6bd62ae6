#include "compress/gzip_header.h"

#include <gtest/gtest.h>

#include <string>

#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

struct HeaderCase {
  std::string extra, name, comment;
  std::uint32_t modified;
  std::string bytes;
};

// Deliberate: a comment and extra data are written without the flags that announce them.
TEST(GzipHeaderTest, WritesEveryFieldButSetsTheFlagOfTheNameAlone) {
  const HeaderCase kTable[] = {
      {"", "", "", 0, "\x1F\x8B\x08\0\0\0\0\0\0\x0B"s},
      {"", "a.txt", "", 0x01020304,
       "\x1F\x8B\x08\x08\4\3\2\1\0\x0B"
       "a.txt\0"s},
      {"", "", "why", 0, "\x1F\x8B\x08\0\0\0\0\0\0\x0Bwhy\0"s},
      {"\1\0"s, "n", "c", 0xFFFFFFFF, "\x1F\x8B\x08\x08\xFF\xFF\xFF\xFF\0\x0B\2\0\1\0n\0c\0"s},
      {"", "a\0b"s, "c\0d"s, 0,
       "\x1F\x8B\x08\x08\0\0\0\0\0\x0B"
       "a\0c\0"s},
  };
  for (const HeaderCase& row : kTable) {
    GzipHeader header;
    header.extra.append(row.extra);
    header.name = row.name;
    header.comment = row.comment;
    header.modified = row.modified;
    RecordedLog log;
    DataBuffer out;
    EXPECT_TRUE(writeGzipHeader(header, out, log));
    EXPECT_EQ(out.text(), row.bytes);
    EXPECT_EQ(log.text(), "");
  }
}

TEST(GzipHeaderTest, RefusesExtraDataThatTheLengthCannotTell) {
  RecordedLog log;
  DataBuffer out;
  GzipHeader header;
  header.extra.append(std::string(65535, 'x'));
  EXPECT_TRUE(writeGzipHeader(header, out, log));
  EXPECT_EQ(out.getSize(), 10u + 2 + 65535);
  header.extra.append("x");
  EXPECT_FALSE(writeGzipHeader(header, out, log));
  EXPECT_TRUE(log.has("The extra data of a gzip header may have 65535 bytes at most."));
}

}  // namespace
}  // namespace zantrel::test

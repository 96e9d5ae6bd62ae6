#include <gtest/gtest.h>

#include <string>

#include "compress/cls_compression.h"
#include "compress/cls_gzip.h"
#include "platform/file.h"
#include "support/component_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

TEST(GzipCorpusTest, StreamsOfManyCompressorsGoThroughTheComponents) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int seen = 0;
  for (const auto& row : readTable(*folder + "/compress/streams.tsv")) {
    if (row[0] == "file" || (row[1] != "gzip" && row[1] != "bzip2" && row[1] != "raw")) continue;
    SCOPED_TRACE(row[0]);
    const DataBuffer in = bytes(readFile(*folder + "/compress/streams/" + row[0]));
    DataBuffer out;
    bool done = false;
    if (row[1] == "gzip") {
      done = ClsGzip().UncompressMemory(in, out, nullptr);
    } else {
      ClsCompression compression;
      compression.put_Algorithm(XString(row[1] == "raw" ? "deflate" : "bz2"));
      done = compression.DecompressBytes(in, out, nullptr);
    }
    ++seen;
    EXPECT_EQ(done, row[2] == "ok");
    EXPECT_EQ(std::to_string(out.getSize()), done ? row[4] : "0");
    const std::string plain = *folder + "/compress/plain/" + row[3];
    if (done && fileExists(plain)) {
      EXPECT_TRUE(out.text() == readFile(plain));
    }
  }
  EXPECT_GT(seen, 50);
}

TEST(GzipCorpusTest, EdgeStreamsGetTheVerdictsExpectedOfUs) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int seen = 0;
  for (const auto& row : readTable(*folder + "/compress/edge_streams.tsv")) {
    if (row[0] != "gzip") continue;
    SCOPED_TRACE(row[2]);
    DataBuffer out;
    const bool done = ClsGzip().UncompressMemory(bytes(unhex(row[1])), out, nullptr);
    // Where nothing is laid down we are as strict as the reference.
    const std::string verdict =
        row.size() > 8 && !row[8].empty() ? row[8] : (row[3] == "ok" ? "ok" : "fail");
    EXPECT_EQ(done, verdict == "ok");
    ++seen;
  }
  EXPECT_GT(seen, 3);
}

TEST(GzipCorpusTest, EveryPlainFileComesBackFromEveryFormat) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const auto& row : readTable(*folder + "/compress/plain.tsv")) {
    if (row[0] == "file") continue;
    SCOPED_TRACE(row[0]);
    const DataBuffer plain = bytes(readFile(*folder + "/compress/plain/" + row[0]));
    for (const char* name : {"deflate", "bz2", "lzw", "ppmd"}) {
      ClsCompression compression;
      compression.put_Algorithm(XString(std::string_view(name)));
      DataBuffer packed, back;
      ASSERT_TRUE(compression.CompressBytes(plain, packed, nullptr)) << name;
      ASSERT_TRUE(compression.DecompressBytes(packed, back, nullptr)) << name;
      EXPECT_TRUE(back.equals(plain)) << name;
    }
  }
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "compress/bzip2_engine.h"
#include "core/log_null.h"
#include "crypto/hash.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string sha256(std::string_view bytes) {
  DataBuffer digest;
  Hash::doHash(bytes.data(), bytes.size(), kHashSha256, digest);
  return hex(digest.text());
}

bool decompress(std::string_view stream, std::size_t piece, DataBuffer& out) {
  Bzip2Engine engine;
  LogNull log;
  if (!engine.beginDecompress({}, out, log, nullptr)) return false;
  for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size())))
    if (!engine.moreDecompress(asBytes(stream.substr(0, piece)), out, log, nullptr)) return false;
  return engine.endDecompress(out, log, nullptr);
}

std::string compressed(std::string_view plain) {
  Bzip2Engine engine;
  LogNull log;
  DataBuffer out;
  EXPECT_TRUE(engine.compressBuffer(asBytes(plain), out, log, nullptr));
  return std::string(out.text());
}

TEST(Bzip2CorpusTest, EveryStreamIsReadOrRefusedInPiecesOfEachSize) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int checked = 0;
  for (const auto& row : readTable(*folder + "/compress/streams.tsv")) {
    if (row[1] != "bzip2") continue;
    const std::string stream = readFile(*folder + "/compress/streams/" + row[0]);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{4099}, std::string::npos}) {
      DataBuffer out;
      EXPECT_EQ(decompress(stream, piece, out), row[2] == "ok") << row[0];
      if (row[2] != "ok") continue;
      EXPECT_EQ(std::to_string(out.getSize()), row[4]) << row[0];
      EXPECT_EQ(sha256(out.text()), row[5]) << row[0];
    }
    ++checked;
  }
  EXPECT_GT(checked, 70);
}

TEST(Bzip2CorpusTest, EveryPlainFileComesBack) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  for (const auto& row : readTable(*folder + "/compress/plain.tsv")) {
    if (row[0] == "file") continue;
    const std::string plain = readFile(*folder + "/compress/plain/" + row[0]);
    DataBuffer out;
    EXPECT_TRUE(decompress(compressed(plain), 1000, out));
    EXPECT_TRUE(out.text() == plain) << row[0];
  }
}

TEST(Bzip2CorpusTest, StreamsAreNotLargerThanTheOtherProgramsInAll) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  std::size_t ours = 0, theirs = 0;
  for (const auto& row : readTable(*folder + "/compress/streams.tsv")) {
    if (!row[0].ends_with(".bzip2.bz2")) continue;
    const std::size_t size = compressed(readFile(*folder + "/compress/plain/" + row[3])).size();
    const std::size_t other = readFile(*folder + "/compress/streams/" + row[0]).size();
    EXPECT_LE(size, other + other / 200 + 8) << row[0];
    ours += size;
    theirs += other;
  }
  EXPECT_GT(theirs, 0U);
  EXPECT_LE(ours, theirs);
}

}  // namespace
}  // namespace zantrel::test

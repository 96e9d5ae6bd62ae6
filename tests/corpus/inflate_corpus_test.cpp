#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "compress/adler32.h"
#include "compress/inflate_state2.h"
#include "compress/zip_crc.h"
#include "crypto/digest_names.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using Status = InflateState2::Status;
using Rows = std::vector<std::vector<std::string>>;

Rows rowsBelowHeadings(const std::string& path) {
  Rows rows = readTable(path);
  rows.erase(rows.begin());
  return rows;
}

struct Result {
  Status status;
  std::string output;
};

Result whole(std::string_view stream) {
  InflateState2 state;
  DataBuffer out;
  ByteSpan in = asBytes(stream);
  const Status status = state.inflateAll(in, out, 0);
  return {status, std::string(out.text())};
}

Result inPieces(std::string_view stream, std::size_t inStep, std::size_t outStep) {
  InflateState2 state;
  std::vector<std::uint8_t> room(outStep);
  std::string output;
  Status status = Status::more;
  for (std::size_t at = 0; at < stream.size() && status == Status::more; at += inStep) {
    ByteSpan piece = asBytes(stream).subspan(at, std::min(inStep, stream.size() - at));
    std::size_t produced = 0;
    do {
      status = state.run(piece, room, produced);
      output.append(reinterpret_cast<const char*>(room.data()), produced);
    } while (status == Status::more && (!piece.empty() || produced == outStep));
  }
  return {status, output};
}

TEST(InflateCorpusTest, RawStreamsOfEveryProducer) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int checked = 0;
  onEachCpuPath([&] {
    for (const auto& row : rowsBelowHeadings(*folder + "/compress/streams.tsv")) {
      if (row[1] != "raw") continue;
      const std::string stream = readFile(*folder + "/compress/streams/" + row[0]);
      std::vector<Result> results = {whole(stream)};
      for (const std::size_t step : {1U, 100U, 1000U, 65536U})
        results.push_back(inPieces(stream, step, step));
      for (const Result& result : results) {
        EXPECT_EQ(result.status == Status::finished, row[2] == "ok") << row[0];
        if (row[2] != "ok") continue;
        EXPECT_EQ(std::to_string(result.output.size()), row[4]) << row[0];
        EXPECT_EQ(hex(digestOf("sha256", result.output)), row[5]) << row[0];
      }
      ++checked;
    }
  });
  EXPECT_GT(checked, 80);
}

TEST(InflateCorpusTest, EdgeStreamsAtEachTruncationAndSplit) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int checked = 0;
  for (const auto& row : rowsBelowHeadings(*folder + "/compress/edge_streams.tsv")) {
    if (row[0] != "raw") continue;
    const std::string stream = unhex(row[1]);
    const Result once = whole(stream);
    EXPECT_EQ(once.status == Status::finished, row[8] == "ok") << row[1];
    EXPECT_EQ(once.status == Status::more, row[3] == "premature") << row[1];
    if (!row[5].empty()) {
      const std::string shown = row[5].size() == 64 && once.output.size() != 32
                                    ? digestOf("sha256", once.output)
                                    : once.output;
      EXPECT_EQ(hex(shown), row[5]) << row[1];
    }
    const std::size_t step = stream.size() > 2000 ? 97 : 1;
    for (std::size_t size = 0; size < stream.size(); size += step) {
      const Result cut = whole(std::string_view(stream).substr(0, size));
      EXPECT_TRUE(once.output.starts_with(cut.output)) << row[1] << " cut to " << size;
      EXPECT_TRUE(cut.status != Status::failed || once.status == Status::failed) << row[1];
    }
    for (const std::size_t piece : {1U, 2U, 3U, 17U, 333U}) {
      const Result pieces = inPieces(stream, piece, 1 + 5 * piece);
      EXPECT_EQ(pieces.status, once.status) << row[1];
      EXPECT_TRUE(pieces.output == once.output) << row[1];
    }
    ++checked;
  }
  EXPECT_GT(checked, 70);
}

TEST(InflateCorpusTest, ChecksumsOfThePlainFiles) {
  const auto folder = corpusFolder();
  if (!folder) GTEST_SKIP() << "ZANTREL_CORPUS is not set";
  int checked = 0;
  onEachCpuPath([&] {
    for (const auto& row : rowsBelowHeadings(*folder + "/compress/plain.tsv")) {
      const std::string bytes = readFile(*folder + "/compress/plain/" + row[0]);
      EXPECT_EQ(ZipCRC::getCRC(asBytes(bytes)), std::stoul(row[3], nullptr, 16)) << row[0];
      EXPECT_EQ(Adler32::getAdler(asBytes(bytes)), std::stoul(row[4], nullptr, 16)) << row[0];
      ++checked;
    }
  });
  EXPECT_GT(checked, 10);
}

}  // namespace
}  // namespace zantrel::test

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/storage.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel {
namespace {

using test::RecordedLog;
using test::TempFolder;

std::string sample(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 + i / 251);
  return text;
}

/// Reads everything in blocks of one size; every block but the last must have that size.
std::string drain(DataSource& source, std::size_t blockSize) {
  RecordedLog log;
  std::string all;
  ByteSpan block;
  for (;;) {
    EXPECT_TRUE(source.nextBlock(blockSize, block, log)) << log.text();
    all += asText(block);
    EXPECT_EQ(source.position(), static_cast<std::int64_t>(all.size()));
    if (block.size() < blockSize) break;
  }
  EXPECT_TRUE(source.nextBlock(blockSize, block, log));
  EXPECT_TRUE(block.empty());
  return all;
}

TEST(DataSourceTest, HandsOutBlocksOfTheSizeAskedFor) {
  const TempFolder folder;
  const std::string content = sample(700'001);
  test::writeFile(folder / "file", content);
  for (const std::size_t blockSize : {std::size_t{1000}, std::size_t{262'144}, std::size_t{262'145},
                                      std::size_t{700'001}, std::size_t{5'000'000}}) {
    RecordedLog log;
    FileDataSource file;
    ASSERT_TRUE(file.open((folder / "file").c_str(), log));
    EXPECT_EQ(file.size(), 700'001);
    EXPECT_TRUE(drain(file, blockSize) == content) << blockSize;
    MemoryDataSource memory(asBytes(content));
    EXPECT_EQ(memory.size(), 700'001);
    EXPECT_TRUE(drain(memory, blockSize) == content) << blockSize;
  }
}

// From two megabytes on a thread reads.
TEST(DataSourceTest, LongFilesComeInBlocksOfAnySizeToo) {
  const TempFolder folder;
  for (const std::size_t size :
       {std::size_t{2'097'152}, std::size_t{2'800'000}, std::size_t{2'999'999}}) {
    const std::string content = sample(size);
    test::writeFile(folder / "file", content);
    for (const std::size_t blockSize :
         {std::size_t{1}, std::size_t{20'000}, std::size_t{65'537}, std::size_t{262'144},
          std::size_t{800'000}, size, std::size_t{5'000'000}}) {
      if (blockSize == 1 && size % 2 == 0) continue;  // once is enough for so many
      RecordedLog log;
      FileDataSource file;
      ASSERT_TRUE(file.open((folder / "file").c_str(), log));
      EXPECT_TRUE(drain(file, blockSize) == content) << size << " in blocks of " << blockSize;
    }
  }
}

TEST(DataSourceTest, TheSizeOfBlocksMayChangeWithinALongFile) {
  const TempFolder folder;
  const std::string content = sample(3'000'000);
  test::writeFile(folder / "file", content);
  RecordedLog log;
  FileDataSource file;
  ASSERT_TRUE(file.open((folder / "file").c_str(), log));
  std::string all;
  const std::size_t sizes[] = {1, 20'000, 700'000, 7, 262'143};
  ByteSpan block;
  for (std::size_t i = 0; i == 0 || !block.empty(); ++i) {
    ASSERT_TRUE(file.nextBlock(sizes[i % 5], block, log));
    all += asText(block);
  }
  EXPECT_TRUE(all == content);
}

TEST(DataSourceTest, ALongFileCanBeReadAfterAShortageOfMemory) {
  const TempFolder folder;
  const std::string content = sample(3'000'000);
  test::writeFile(folder / "file", content);
  for (const std::size_t allocations : {0U, 1U}) {
    RecordedLog log;
    FileDataSource file;
    ASSERT_TRUE(file.open((folder / "file").c_str(), log));
    ByteSpan block;
    {
      const storage::ScopedAllocationFault fault(allocations);
      file.nextBlock(20'000, block, log);
    }
    std::string all(asText(block));
    while (file.nextBlock(20'000, block, log) && !block.empty()) all += asText(block);
    EXPECT_TRUE(all == content) << allocations;
  }
}

TEST(DataSourceTest, ALongFileMayBeGivenUpAndAnotherOpenedAtAnyTime) {
  const TempFolder folder;
  test::writeFile(folder / "long", sample(3'000'000));
  test::writeFile(folder / "short", "short");
  FileDataSource file;
  RecordedLog log;
  ByteSpan block;
  for (int blocks = 0; blocks < 40; ++blocks) {
    ASSERT_TRUE(file.open((folder / "long").c_str(), log));
    for (int i = 0; i < blocks; ++i) ASSERT_TRUE(file.nextBlock(20'000, block, log));
    ASSERT_TRUE(file.open((folder / "short").c_str(), log));
    EXPECT_EQ(drain(file, 20'000), "short");
  }
}

TEST(DataSourceTest, LogsWhatKeepsAFileFromBeingRead) {
  const TempFolder folder;
  RecordedLog log;
  FileDataSource file;
  EXPECT_EQ(file.size(), -1);
  EXPECT_FALSE(file.open((folder / "missing").c_str(), log));
  EXPECT_TRUE(log.has("error: Failed to open file.\n"));
  test::writeFile(folder / "file", "x");
  ASSERT_TRUE(file.open((folder / "file").c_str(), log));
  const storage::ScopedAllocationFault fault(0);
  ByteSpan block;
  EXPECT_FALSE(file.nextBlock(10, block, log));
  EXPECT_TRUE(log.has("error: Out of memory while reading the file.\n"));
}

TEST(DataSinkTest, CopiesFromAnySourceToAnySink) {
  const TempFolder folder;
  const std::string content = sample(600'000);
  RecordedLog log;
  MemoryDataSource memory(asBytes(content));
  FileDataSink file;
  ASSERT_TRUE(file.open((folder / "copy").c_str(), log));
  EXPECT_TRUE(copyData(memory, file, log) && file.commit(log)) << log.text();
  FileDataSource source;
  ASSERT_TRUE(source.open((folder / "copy").c_str(), log));
  DataBuffer out;
  BufferDataSink buffer(out);
  EXPECT_TRUE(copyData(source, buffer, log) && buffer.commit(log));
  EXPECT_TRUE(out.text() == content);
  EXPECT_EQ(buffer.size(), 600'000);
}

TEST(DataSinkTest, GathersSmallWritesInOrder) {
  const TempFolder folder;
  RecordedLog log;
  FileDataSink file;
  ASSERT_TRUE(file.open((folder / "file").c_str(), log));
  std::string expected;
  for (std::size_t i = 0; i < 500; ++i) {
    const std::string piece = sample(i % 7 == 0 ? 70'000 : i);
    ASSERT_TRUE(file.write(piece, log));
    expected += piece;
  }
  EXPECT_TRUE(file.commit(log));
  EXPECT_EQ(file.size(), static_cast<std::int64_t>(expected.size()));
  EXPECT_TRUE(test::readFile(folder / "file") == expected);
}

TEST(DataSinkTest, AFileKeepsItsContentUntilTheCommit) {
  const TempFolder folder;
  test::writeFile(folder / "file", "old");
  RecordedLog log;
  {
    FileDataSink file;
    ASSERT_TRUE(file.open((folder / "file").c_str(), log));
    EXPECT_TRUE(file.write("new", log));
  }
  EXPECT_EQ(test::readFile(folder / "file"), "old");
  FileDataSink closed;
  EXPECT_FALSE(closed.write("x", log));
  EXPECT_FALSE(closed.commit(log));
  EXPECT_FALSE(closed.open((folder / "no/such/folder").c_str(), log));
  EXPECT_TRUE(log.has("error: Failed to create file.\n"));
}

TEST(DataSinkTest, StopsAtTheEndOfFixedMemory) {
  std::array<std::uint8_t, 5> memory{};
  MemoryDataSink sink(memory);
  RecordedLog log;
  EXPECT_TRUE(sink.write("abc", log));
  EXPECT_FALSE(sink.write("def", log));
  EXPECT_TRUE(log.has("error: Output is too large.\ncapacity: 5\n"));
  EXPECT_FALSE(sink.write("g", log));
  EXPECT_FALSE(sink.commit(log));
  EXPECT_EQ(sink.size(), 3);
  EXPECT_EQ(memory[3], 0);
}

TEST(DataSinkTest, ABufferKeepsWhatItHasWhenStorageRunsOut) {
  DataBuffer out;
  BufferDataSink sink(out);
  RecordedLog log;
  EXPECT_TRUE(sink.write("abc", log));
  const storage::ScopedAllocationFault fault(0);
  EXPECT_FALSE(sink.write(std::string(100'000, 'x'), log));
  EXPECT_EQ(out.text(), "abc");
  EXPECT_TRUE(log.has("error: Out of memory.\nnumBytes: 100003\n"));
}

}  // namespace
}  // namespace zantrel

#include "compress/gzip_reader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "compress/gzip_members.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

using namespace std::string_literals;

struct Reading {
  bool ok = false;
  std::string text;
  std::string log;
  GzipHeader header;
  std::int64_t members = 0;
};

Reading read(std::string_view gzip, std::uint64_t maxSize = 0) {
  RecordedLog log;
  MemoryDataSource source(asBytes(gzip));
  DataBuffer out;
  BufferDataSink sink(out);
  GzipReader reader(source, log, nullptr);
  reader.setMaxDecompressedSize(maxSize);
  Reading result;
  result.ok = reader.decompress(sink);
  result.text = out.text();
  result.log = log.text();
  result.header = reader.firstHeader();
  result.members = reader.memberCount();
  return result;
}

void expectLogged(const Reading& reading, std::string_view part) {
  EXPECT_NE(reading.log.find(part), std::string::npos) << "no \"" << part << "\" in\n"
                                                       << reading.log;
}

TEST(GzipReaderTest, ReadsTheFieldsThatTheFlagsName) {
  for (int flags = 0; flags < 32; ++flags) {
    SCOPED_TRACE(flags);
    const Reading reading = read(gzipMember("content", flags));
    EXPECT_TRUE(reading.ok) << reading.log;
    EXPECT_EQ(reading.text, "content");
    EXPECT_EQ(reading.header.extra.text(), (flags & 4) != 0 ? "extra" : "");
    EXPECT_EQ(reading.header.name, (flags & 8) != 0 ? "name.txt" : "");
    EXPECT_EQ(reading.header.comment, (flags & 16) != 0 ? "a comment" : "");
    expectLogged(reading, "info: GZip header OK.");
  }
}

TEST(GzipReaderTest, ReadsMembersOneAfterTheOtherAndIgnoresWhatFollows) {
  const std::string big(200000, 'x');
  const std::string two = gzipMember("one", 8) + gzipMember("") + gzipMember(big, 2);
  EXPECT_EQ(read(two).text, "one" + big);
  EXPECT_EQ(read(two).members, 3);
  for (const std::string& rest : {"\0"s, std::string(1000, '\0'), "\x1F"s, "\x8B\x1F"s}) {
    const Reading reading = read(two + rest);
    EXPECT_TRUE(reading.ok);
    EXPECT_EQ(reading.text, "one" + big);
    expectLogged(reading, "info: What follows the gzip data is no gzip data and is ignored.");
    expectLogged(reading, "offset: " + std::to_string(two.size()));
  }
  EXPECT_FALSE(read(two + "\x1F\x8B").ok);
}

struct BadHeader {
  std::string bytes;
  const char* error;
};

TEST(GzipReaderTest, SaysWhatIsWrongWithAHeader) {
  const BadHeader kTable[] = {
      {"", "Failed to get gzip signature"},
      {"\x1F\x8B\x08", "Failed to get gzip signature"},
      {"PK\3\4\5\6\7\0\0\0"s, "Invalid GZip ID"},
      {"\x1F\x8C\x08\0\0\0\0\0\0\3"s, "Invalid GZip ID"},
      {"\x1F\x8B\x07\0\0\0\0\0\0\3"s, "Invalid GZip compression method"},
      {gzipFixedHeader(0x20), "The gzip header has flags that no version of the format knows."},
      {gzipFixedHeader(4) + "\5\0ex"s, "The gzip header is not complete."},
      {gzipFixedHeader(8) + "name", "The gzip header is not complete."},
      {gzipFixedHeader(2) + "\0"s, "The gzip header is not complete."},
      {gzipFixedHeader(2) + "\1\2"s, "The checksum of the gzip header does not match."},
  };
  for (const BadHeader& row : kTable) {
    const Reading reading = read(row.bytes);
    EXPECT_FALSE(reading.ok);
    expectLogged(reading, "error: "s + row.error);
  }
}

TEST(GzipReaderTest, FailsAtEveryTruncationPointWithTheRightWords) {
  const std::string header = gzipFixedHeader(31);
  const std::string whole = gzipMember("content", 31);
  const std::size_t dataAt = whole.size() - 8 - storedDeflate("content").size();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    const Reading reading = read(whole.substr(0, size));
    EXPECT_FALSE(reading.ok);
    expectLogged(reading, size < header.size() ? "error: Failed to get gzip signature"
                          : size < dataAt      ? "error: The gzip header is not complete."
                          : size < whole.size() - 8
                              ? "error: Deflated data ended prematurely."
                              : "error: The gzip data end before their checksum.");
  }
}

TEST(GzipReaderTest, LogsBothValuesOfAChecksumOrSizeThatDoesNotMatch) {
  std::string damaged = gzipMember("content");
  damaged[damaged.size() - 8] ^= 1;
  Reading reading = read(damaged);
  EXPECT_FALSE(reading.ok);
  const std::uint32_t crc = slowCrc32("content");
  expectLogged(reading, "storedCrc: " + std::to_string(crc ^ 1));
  expectLogged(reading, "computedCrc: " + std::to_string(crc));
  expectLogged(reading, "error: The CRC-32 of the decompressed data does not match.");
  damaged = gzipMember("content");
  damaged[damaged.size() - 1] ^= 1;
  reading = read(damaged);
  EXPECT_FALSE(reading.ok);
  expectLogged(reading, "storedSize: 16777223");
  expectLogged(reading, "computedSize: 7");
  expectLogged(reading, "error: The size of the decompressed data does not match.");
}

TEST(GzipReaderTest, LogsTheCodeOfAStreamThatIsNotValid) {
  const Reading reading = read(gzipFixedHeader(0) + "\x07");
  EXPECT_FALSE(reading.ok);
  expectLogged(reading, "deflateError: 1");
  expectLogged(reading, "error: The deflated data are not valid.");
}

// Deliberate: this library sets no flag but that of the name.
TEST(GzipReaderTest, ReadsFieldsThatWeWriteWithoutFlags) {
  std::mt19937 random(1);
  std::string large;
  while (large.size() < 300000) large += static_cast<char>(random());
  const std::string binary = "\0\1\2\3\xFF"s;
  std::string sentences;
  while (sentences.size() < 40000) sentences += "What is said of it. ";
  for (const std::string& text : {""s, "x"s, large}) {
    for (const std::string& extra : {""s, "e"s, binary, std::string(65535, '\0')}) {
      for (const std::string& name : {""s, "name"s}) {
        // Beginnings that a decoder takes for stored, fixed and dynamic blocks.
        for (const std::string& comment : {""s, "a"s, "K"s, "r"s, "Report"s, "s"s,
                                           "jjjjjjjjjjjjjjj"s, "\5\xC2"s, "\3"s, sentences}) {
          const Reading reading = read(unflaggedMember(text, extra, name, comment));
          ASSERT_TRUE(reading.ok) << reading.log;
          ASSERT_TRUE(reading.text == text);
          EXPECT_EQ(reading.header.extra.text(), extra);
          EXPECT_EQ(reading.header.name, name);
          EXPECT_EQ(reading.header.comment, comment);
        }
      }
    }
  }
}

TEST(GzipReaderTest, ReadsByTheFlagsWhereTheHeaderIsNotOurs) {
  std::string foreign = unflaggedMember("content", "", "name", "comment");
  foreign[9] = 3;
  EXPECT_FALSE(read(foreign).ok);
}

TEST(GzipReaderTest, BlamesTheDataWhereNoLayoutInflates) {
  std::string damaged = unflaggedMember("content", "", "name", "");
  damaged[damaged.size() - 8] ^= 1;
  expectLogged(read(damaged), "error: The CRC-32 of the decompressed data does not match.");
}

TEST(GzipReaderTest, StopsAtTheLargestSizeThatIsAllowed) {
  const std::string three = gzipMember("abc") + gzipMember("def") + gzipMember("ghi");
  EXPECT_TRUE(read(three, 9).ok);
  const Reading reading = read(three, 8);
  EXPECT_FALSE(reading.ok);
  expectLogged(reading, "error: The decompressed data are larger than the limit that was set.");
  expectLogged(reading, "maxDecompressedSize: 8");
}

TEST(GzipReaderTest, LogsOfAnyNumberOfMembersABoundedNumberOfLines) {
  std::string many;
  for (int i = 0; i < 20000; ++i) many += gzipMember("");
  const Reading reading = read(many);
  EXPECT_TRUE(reading.ok);
  EXPECT_EQ(reading.members, 20000);
  EXPECT_LT(reading.log.size(), 10000u);
}

TEST(GzipReaderTest, KeepsABoundedPartOfAnEndlessName) {
  const std::string name(3000000, 'n');
  const Reading reading =
      read(gzipFixedHeader(8) + name + '\0' + storedDeflate("x") + gzipTrailer("x"));
  EXPECT_TRUE(reading.ok);
  EXPECT_EQ(reading.header.name, name.substr(0, 65536));
}

}  // namespace
}  // namespace zantrel::test

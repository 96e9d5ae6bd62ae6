#include "compress/tar_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "compress/tar_archives.h"
#include "support/recorded_log.h"

namespace zantrel::test {
namespace {

/// Entries one a line: type, name, link, size and the data in brackets.
class ListingSink final : public TarEntrySink {
 public:
  std::string text;
  bool beginEntry(const TarEntry& entry) override {
    text += entry.isFolder() ? 'd' : entry.type == '\0' ? '0' : entry.type;
    text += " " + entry.name + (entry.linkName.empty() ? "" : " -> " + entry.linkName) + " " +
            std::to_string(entry.size) + (entry.sparse ? " sparse" : "") + " [";
    return true;
  }
  bool entryData(ByteSpan bytes) override {
    text += asText(bytes);
    return true;
  }
  bool endEntry() override {
    text += "]\n";
    return true;
  }
};

struct Listing {
  bool ok;
  std::string text;
  std::string log;
};

Listing list(const std::string& archive, std::size_t piece = 1 << 20) {
  RecordedLog log;
  ListingSink sink;
  TarReader reader(sink);
  bool ok = true;
  for (std::size_t at = 0; ok && at < archive.size(); at += piece) {
    ok = reader.write(std::string_view(archive).substr(at, piece), log);
  }
  ok = ok && reader.finish(log);
  return {ok, sink.text, log.text()};
}

std::string meta(char type, const std::string& data) {
  return tarMember({"././@LongLink", type, data});
}

TEST(TarReaderTest, ReadsEveryKindOfHeader) {
  const std::string longName = std::string(150, 'n') + "/file";
  std::string gnu = tarHeader({"old", '0', ""}, octal(3, 11));
  gnu.replace(257, 8, "ustar  \0", 8);
  gnu.replace(345, 4, "time");  // no prefix in this format
  setTarChecksum(gnu);
  std::string v7 = tarHeader({"dir/", '\0'}, octal(0, 11));
  v7.replace(257, 8, 8, '\0');
  setTarChecksum(v7);
  const std::string binarySize = std::string("\x80\0\0\0\0\0\0\0\0\0\0\4", 12);
  std::string sparse = tarHeader({"holes", 'S'}, octal(2, 11));
  sparse[482] = 1;
  setTarChecksum(sparse);
  std::string map(512, '\0');
  map[504] = 1;
  const std::string archive =
      tarMember({"a.txt", '0', "hello"}) + tarMember({"empty"}) +
      tarMember({.name = "name", .data = "x", .prefix = "some/prefix"}) +
      tarMember({"link", '2', "", "a.txt"}) + tarMember({"hard", '1', "", "a.txt"}) +
      tarMember({"dir", '5'}) + gnu + padded("abc") + v7 + tarHeader({"b"}, binarySize) +
      padded("4444") + meta('L', longName + '\0') + tarMember({"cut", '0', "L"}) +
      meta('K', "far/away") + meta('L', "from") + tarMember({"x", '2', "", "y"}) +
      meta('x', paxRecord("path", "p\xC3\xA4th") + paxRecord("size", "2") +
                    paxRecord("comment", "a = b\nc")) +
      tarHeader({"x"}, octal(0, 11)) + padded("zz") + meta('g', paxRecord("path", "all")) +
      tarMember({"after"}) + meta('x', paxRecord("GNU.sparse.major", "1")) + tarMember({"s"}) +
      sparse + map + std::string(512, '\0') + padded("SS") + tarMember({"pipe", '6'});
  const std::string expected =
      "0 a.txt 5 [hello]\n"
      "0 empty 0 []\n"
      "0 some/prefix/name 1 [x]\n"
      "2 link -> a.txt 0 []\n"
      "1 hard -> a.txt 0 []\n"
      "d dir 0 []\n"
      "0 old 3 [abc]\n"
      "d dir/ 0 []\n"
      "0 b 4 [4444]\n"
      "0 " +
      longName + " 1 [L]\n" +
      "2 from -> far/away 0 []\n"
      "0 p\xC3\xA4th 2 [zz]\n"
      "0 after 0 []\n"
      "0 s 0 sparse []\n"
      "S holes 2 sparse [SS]\n"
      "6 pipe 0 []\n";
  for (const std::size_t piece : {1u, 7u, 511u, 512u, 513u, 100000u}) {
    const Listing listing = list(archive + kTarEnd + "what follows is ignored", piece);
    EXPECT_TRUE(listing.ok) << listing.log;
    EXPECT_EQ(listing.text, expected) << piece;
  }
  EXPECT_EQ(list(archive).text, expected) << "without blocks of zeros at the end";
}

TEST(TarReaderTest, FailsWithinAnEntryButNotBetweenTwo) {
  const std::string whole = meta('L', "name") + tarMember({"x", '0', "data"}) + tarMember({"y"});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const bool between = size == 0 || size == 2048;
    EXPECT_EQ(list(whole.substr(0, size)).ok, between || size == 1024) << size;
  }
}

TEST(TarReaderTest, RefusesWhatNoArchiveHolds) {
  std::string damaged = tarMember({"x", '0', "data"});
  damaged[0] = 'y';
  const std::string negative = std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE", 12);
  const std::string beyond = std::string("\x80\0\0\1\0\0\0\0\0\0\0\0", 12);
  const std::string kTable[] = {
      damaged,
      std::string(512, 'x'),
      tarHeader({"x"}, "not a number"),
      tarHeader({"x"}, negative),
      tarHeader({"x"}, beyond),
      tarHeader({"x", 'L'}, octal(1 << 30, 11)),
      meta('x', "99 path=x\n"),
      meta('x', "0 path=x\n"),
      meta('x', "11 path=abcd"),
      meta('x', "9 pathabc\n"),
      meta('x', paxRecord("size", "many")),
      meta('x', paxRecord("size", "99999999999999999999")),
      meta('x', paxRecord("size", "9999999999999999999")),
      meta('x', "\xFF"),
  };
  for (const std::string& archive : kTable) {
    const Listing listing = list(archive + kTarEnd);
    EXPECT_FALSE(listing.ok) << listing.text;
    EXPECT_NE(listing.log.find("error: "), std::string::npos);
  }
}

}  // namespace
}  // namespace zantrel::test

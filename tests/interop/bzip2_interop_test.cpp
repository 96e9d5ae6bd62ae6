// bzip2 and LZW against the programs that made the formats and others that read them, both ways.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "compress/bzip2_engine.h"
#include "compress/lzw_engine.h"
#include "core/log_null.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using Command = std::vector<std::string>;

// A document, a program, noise of several alphabets, runs and repetitions.
std::vector<std::string> texts() {
  const std::string document = readFile(std::string(ZANTREL_SOURCE_DIR) + "/docs/errors.md");
  const std::string program = readFile("/proc/self/exe").substr(0, 950'000);
  std::vector<std::string> all = {"", "a", "aaaa", document, program, std::string(3'000'000, 'r')};
  std::mt19937 random(1);
  for (const unsigned values : {2U, 256U}) {
    std::string text(200'000, '\0');
    for (char& c : text) c = static_cast<char>(random() % values);
    all.push_back(text);
  }
  std::string periodic;
  while (periodic.size() < 950'000) periodic += document.substr(0, 5000);
  all.push_back(periodic);
  // The table of a .Z stream gets useless where the text changes.
  all.push_back(document + all[7] + document + program.substr(0, 100'000) + document);
  return all;
}

struct Peer {
  Command pack;
  Command unpack;
};

// What we pack is read by `unpack` and what `pack` writes is read by us.
void expectTheSame(CompressionEngine& engine, const std::vector<Peer>& peers) {
  int tried = 0;
  for (const Peer& peer : peers) {
    if (!haveProgram(peer.unpack.front())) continue;
    ++tried;
    for (const std::string& text : texts()) {
      LogNull log;
      DataBuffer packed, unpacked;
      ASSERT_TRUE(engine.compressBuffer(asBytes(text), packed, log, nullptr));
      EXPECT_TRUE(runProgram(peer.unpack, std::string(packed.text())) == text)
          << peer.unpack.front() << " of " << text.size();
      if (peer.pack.empty()) continue;
      const auto theirs = runProgram(peer.pack, text);
      ASSERT_TRUE(theirs.has_value()) << peer.pack.front();
      EXPECT_TRUE(engine.decompressBuffer(asBytes(*theirs), unpacked, log, nullptr));
      EXPECT_TRUE(unpacked.text() == text) << peer.pack.front() << " of " << text.size();
    }
  }
  if (tried == 0) GTEST_SKIP() << "no peer is installed";
}

TEST(Bzip2InteropTest, OtherProgramsReadAndWriteTheSame) {
  Bzip2Engine engine;
  const std::string python = "import bz2,sys; i,o=sys.stdin.buffer,sys.stdout.buffer; o.write(bz2.";
  expectTheSame(engine, {{{"bzip2", "-9c"}, {"bzip2", "-dc"}},
                         {{"bzip2", "-1c"}, {"bzip2", "-dc"}},
                         {{"python3", "-c", python + "compress(i.read(),5))"},
                          {"python3", "-c", python + "decompress(i.read()))"}}});
}

TEST(LzwInteropTest, OtherProgramsReadAndWriteTheSame) {
  LzwEngine engine;
  // compress -b9 writes what neither it nor gzip reads.
  std::vector<Peer> peers = {{{}, {"gzip", "-dc"}}};
  for (const char* bits : {"10", "12", "15", "16"})
    peers.push_back({{"compress", "-f", "-c", "-b", bits}, {"compress", "-d", "-c"}});
  expectTheSame(engine, peers);
}

TEST(LzwInteropTest, OutputIsAboutAsSmallAsCompressMakesIt) {
  if (!haveProgram("compress")) GTEST_SKIP() << "compress is not installed";
  LzwEngine engine;
  const std::vector<std::string> all = texts();
  for (const std::string& text : all) {
    LogNull log;
    DataBuffer packed;
    ASSERT_TRUE(engine.compressBuffer(asBytes(text), packed, log, nullptr));
    const auto theirs = runProgram({"compress", "-f", "-c"}, text);
    ASSERT_TRUE(theirs.has_value());
    // The two look at different stretches before they give up a table, which shows where kinds of
    // data change.
    const std::size_t more = theirs->size() / (&text == &all.back() ? 10 : 100);
    EXPECT_LE(packed.getSize(), theirs->size() + more) << text.size();
  }
}

}  // namespace
}  // namespace zantrel::test

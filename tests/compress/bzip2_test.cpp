#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "compress/bzip2_bit_output.h"
#include "compress/bzip2_engine.h"
#include "compress/bzip2_huffman.h"
#include "compress/bzip2_move_to_front.h"
#include "compress/bzip2_rotation_sort.h"
#include "compress/noise.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "frame/progress_monitor.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

constexpr std::size_t kWhole = std::string::npos;

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (; count > 0; --count) all += text;
  return all;
}

struct Outcome {
  bool done = false;
  std::string out;
  std::string log;
};

Outcome decompress(std::string_view stream, std::size_t piece = kWhole, std::uint64_t limit = 0) {
  Bzip2Engine engine;
  engine.setMaxDecompressedSize(limit);
  RecordedLog log;
  DataBuffer out;
  bool done = engine.beginDecompress({}, out, log, nullptr);
  for (; done && !stream.empty(); stream.remove_prefix(std::min(piece, stream.size())))
    done = engine.moreDecompress(asBytes(stream.substr(0, piece)), out, log, nullptr);
  done = done && engine.endDecompress(out, log, nullptr);
  return {done, std::string(out.text()), log.text()};
}

std::string compress(std::string_view text, std::size_t piece = kWhole) {
  Bzip2Engine engine;
  RecordedLog log;
  DataBuffer out;
  EXPECT_TRUE(engine.beginCompress({}, out, log, nullptr));
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
    EXPECT_TRUE(engine.moreCompress(asBytes(text.substr(0, piece)), out, log, nullptr));
  EXPECT_TRUE(engine.endCompress(out, log, nullptr));
  EXPECT_EQ(log.text(), "");
  return std::string(out.text());
}

void expectRoundTrip(std::string_view text, std::size_t piece = kWhole) {
  const Outcome back = decompress(compress(text, piece), piece);
  EXPECT_TRUE(back.done && back.out == text) << text.size() << " bytes: " << back.log;
}

TEST(Bzip2Test, ReadsStreamsOfAnotherProgramInPiecesOfEverySize) {
  for (const auto& row : readTable(std::string(ZANTREL_TEST_DATA) + "/compress/bzip2.tsv")) {
    const std::string plain = repeated(unescape(row[1]), std::stoul(row[2]));
    const std::string stream = unhex(row[0]);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, kWhole}) {
      const Outcome outcome = decompress(stream, piece);
      EXPECT_TRUE(outcome.done && outcome.out == plain) << row[0] << outcome.log;
    }
  }
}

TEST(Bzip2Test, ReadsBlocksThatOldEncodersDisturbed) {
  const auto row =
      readTable(std::string(ZANTREL_TEST_DATA) + "/compress/bzip2_disturbed.tsv").front();
  const Outcome outcome = decompress(unhex(row[0]));
  ASSERT_TRUE(outcome.done) << outcome.log;
  ASSERT_EQ(outcome.out.size(), std::stoul(row[1]));
  std::size_t disturbed = 0;
  for (std::size_t i = 0; i < outcome.out.size(); ++i)
    disturbed += outcome.out[i] != static_cast<char>(4 * i);
  EXPECT_EQ(disturbed, std::stoul(row[2]));
}

TEST(Bzip2Test, MovesToTheFrontAlikeWithVectorsAndWithout) {
  for (const unsigned size : {1U, 7U, 8U, 15U, 16U, 17U, 100U, 255U, 256U}) {
    Bzip2MoveToFront vectors, words;
    std::string plain;
    for (unsigned byte = 0; byte < size; ++byte) {
      vectors.append(static_cast<std::uint8_t>(byte));
      words.append(static_cast<std::uint8_t>(byte));
      plain += static_cast<char>(byte);
    }
    Bzip2MoveToFront positions = vectors;
    for (const char c : noise(2000, size, size)) {
      const auto byte = static_cast<std::uint8_t>(c);
      const std::size_t place = plain.find(c);
      ASSERT_EQ(vectors.find(byte), place) << size;
      ASSERT_EQ(words.findInWords(byte), place) << size;
      ASSERT_EQ(positions.take(static_cast<unsigned>(place)), byte) << size;
      std::rotate(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(place),
                  plain.begin() + static_cast<std::ptrdiff_t>(place) + 1);
    }
  }
}

TEST(Bzip2Test, RestoresRunsOfEveryLengthHoweverTheyAreCut) {
  std::string text;
  for (std::size_t length = 1; length < 600; length += length < 20 || length > 250 ? 1 : 23)
    text += std::string(length, static_cast<char>(length % 3)) + "x";
  for (const std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{250}, kWhole})
    expectRoundTrip(text, piece);
}

TEST(Bzip2Test, RestoresWhateverCrossesTheEndOfABlock) {
  const std::string lead = noise(899'985, 250);
  for (std::size_t run = 8; run < 16; ++run)
    expectRoundTrip(lead + std::string(run, '\xFF') + "after" + std::string(300, 'r'), 65'536);
}

TEST(Bzip2Test, RestoresNoiseOfEveryAlphabet) {
  for (const unsigned values : {1U, 2U, 3U, 16U, 255U, 256U})
    for (const std::size_t size : {1U, 2U, 50U, 51U, 1000U, 20'000U, 1'000'000U})
      expectRoundTrip(noise(size, values));
}

TEST(Bzip2Test, FindsTheTextOfBlocksThatRepeatThemselves) {
  for (const std::size_t period : {1U, 2U, 3U, 100U, 4096U, 90'000U, 450'000U})
    for (const std::size_t size : {std::size_t{20'000}, std::size_t{900'000}})
      if (period < size) expectRoundTrip(repeated(noise(period, 200), size / period));
}

TEST(Bzip2Test, OutputAppearsBlockByBlock) {
  Bzip2Engine engine;
  RecordedLog log;
  DataBuffer out, back;
  const std::string text = noise(2'000'000, 256);
  ASSERT_TRUE(engine.beginCompress(asBytes(text), out, log, nullptr));
  const std::uint32_t before = out.getSize();
  EXPECT_GT(before, 1'790'000U);
  ASSERT_TRUE(engine.endCompress(out, log, nullptr));
  ASSERT_TRUE(engine.beginDecompress(out.bytes().first(before), back, log, nullptr));
  EXPECT_GT(back.getSize(), 890'000U);
}

TEST(Bzip2Test, EveryTruncationFailsAndKeepsWhatWasCertain) {
  const std::string first = repeated("text of the first stream ", 20), second = noise(300, 256);
  const std::string streams = compress(first) + compress(second);
  const std::size_t firstSize = compress(first).size();
  for (std::size_t size = 0; size < streams.size(); ++size) {
    const Outcome outcome = decompress(std::string_view(streams).substr(0, size));
    EXPECT_EQ(outcome.done, size == firstSize) << size;
    EXPECT_TRUE((first + second).starts_with(outcome.out)) << size;
    EXPECT_EQ(outcome.log, outcome.done ? "" : "error: The bzip2 data ended prematurely.\n")
        << size;
  }
}

TEST(Bzip2Test, IgnoresWhatFollowsAndIsNoStream) {
  for (const std::string_view trailer :
       {std::string_view("\0\0\0\0\0\0", 6), std::string_view("x"), std::string_view("BZx"),
        std::string_view("BZh0"), std::string_view("\0BZh9", 5)}) {
    for (const std::size_t piece : {std::size_t{1}, kWhole}) {
      const Outcome outcome = decompress(compress("data") + std::string(trailer), piece);
      EXPECT_TRUE(outcome.done) << trailer;
      EXPECT_EQ(outcome.out, "data");
      EXPECT_EQ(outcome.log, "info: Bytes after the end of the bzip2 data were ignored.\n");
    }
  }
}

TEST(Bzip2Test, WrongChecksumsFailWithBothValuesInTheLog) {
  const std::string stream = compress("a");  // 19939b6b twice: 429103979
  std::string block = stream;
  block[10] = static_cast<char>(block[10] ^ 1);
  const Outcome wrongBlock = decompress(block);
  EXPECT_FALSE(wrongBlock.done);
  EXPECT_EQ(wrongBlock.log,
            "error: The checksum of a bzip2 block does not match its data.\n"
            "storedCrc: 412326763\ncomputedCrc: 429103979\n");
  std::string whole = stream;
  whole.back() = static_cast<char>(whole.back() ^ 0x80);
  const Outcome wrongStream = decompress(whole);
  EXPECT_FALSE(wrongStream.done);
  EXPECT_EQ(wrongStream.out, "a");
  EXPECT_TRUE(wrongStream.log.starts_with(
      "error: The checksum of a bzip2 stream does not match its blocks.\nstoredCrc: "));
  EXPECT_TRUE(wrongStream.log.ends_with("\ncomputedCrc: 429103979\n")) << wrongStream.log;
}

TEST(Bzip2Test, DataOfAnotherKindAreNotTakenForBzip2) {
  for (const char* text : {"PK\3\4", "BZ0h", "BZh:", "b"}) {
    const Outcome outcome = decompress(text);
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(outcome.log, "error: The data do not begin with a bzip2 header.\n") << text;
  }
  const Outcome outcome = decompress("BZh9 and then some text");
  EXPECT_FALSE(outcome.done);
  EXPECT_EQ(outcome.log,
            "error: Neither a bzip2 block nor the end of the stream stands where one must.\n");
}

// The block "a" as strings of bits, to be spoilt in one place.
struct Block {
  std::string origin = "0" + std::string(24, '0');
  std::string used = "00000010000000000100000000000000";  // range 6, byte 1 in it
  std::string tables = "010";
  std::string selectorCount = "000000000000001";
  std::string selectors = "0";
  std::string lengths = "00001010000000101000";  // 1, 2, 2 in both tables
  std::string symbols = "011";                   // one zero, the end

  std::string stream(char size) const {
    const std::string bits = origin + used + tables + selectorCount + selectors + lengths + symbols;
    Bzip2BitOutput out;
    out.reserve(400 + bits.size());
    for (const char byte : {'B', 'Z', 'h', size}) out.put(static_cast<unsigned char>(byte), 8);
    out.put(bzip2::kBlockMark, 48);
    out.put(0x19939B6B, 32);
    for (const char bit : bits) out.put(bit == '1', 1);
    out.put(bzip2::kEndMark, 48);
    out.put(0x19939B6B, 32);
    out.alignToByte();
    return std::string(asText(out.bytes()));
  }
};

TEST(Bzip2Test, NamesWhatIsWrongWithABlock) {
  ASSERT_EQ(decompress(Block().stream('1')).out, "a");
  struct Row {
    const char* fault;
    std::function<void(Block&)> spoil;
  };
  const std::string zeros(50, '0');
  const Row rows[] = {
      {"row of the text", [](Block& b) { b.origin.back() = '1'; }},
      {"no byte occurs", [&](Block& b) { b.used = zeros.substr(0, 16); }},
      {"no byte occurs", [&](Block& b) { b.used = "1" + zeros.substr(0, 31); }},
      {"number of tables", [](Block& b) { b.tables = "001"; }},
      {"number of tables", [](Block& b) { b.tables = "111"; }},
      {"no selectors", [&](Block& b) { b.selectorCount = zeros.substr(0, 15); }},
      {"selector of no table", [](Block& b) { b.selectors = "110"; }},
      {"code length", [](Block& b) { b.lengths.replace(0, 5, "00000"); }},
      {"code length", [](Block& b) { b.lengths.replace(0, 5, "10101"); }},
      {"code length", [](Block& b) { b.lengths.replace(0, 5, "0000111"); }},
      {"code length", [](Block& b) { b.lengths.replace(0, 5, "1010010"); }},
      {"code of no symbol",  // lengths 1, 3, 3: the codes from 110 on are nobody's
       [](Block& b) { b.lengths.replace(0, 10, "000010101000"), b.symbols = "0110"; }},
      {"more symbols than selectors", [&](Block& b) { b.symbols = zeros + "11"; }},
      {"more bytes than a block may have",
       [&](Block& b) { b.symbols = zeros.substr(0, 17) + "11"; }},
      {"more bytes than a block may have",
       [&](Block& b) { b.symbols = zeros.substr(0, 49) + "11"; }},
      {"run without its count", [](Block& b) { b.symbols = "10011"; }},
  };
  for (const Row& row : rows) {
    Block block;
    row.spoil(block);
    for (const std::size_t piece : {std::size_t{1}, kWhole}) {
      const Outcome outcome = decompress(block.stream('1'), piece);
      EXPECT_FALSE(outcome.done) << row.fault;
      EXPECT_EQ(outcome.log,
                "error: A bzip2 block is malformed.\nfault: " + std::string(row.fault) + "\n");
    }
  }
}

TEST(Bzip2Test, CodesThatAreNeverMetMayBeWrong) {
  Block block;  // three symbols of length 1 in the second table: none is left for the last
  block.lengths.replace(10, 10, "00001000");
  EXPECT_EQ(decompress(block.stream('9')).out, "a");
}

TEST(Bzip2Test, SelectorsBeyondWhatABlockNeedsAreReadPast) {
  Block block;
  block.selectorCount = std::string(15, '1');
  block.selectors = std::string(32'767, '0');
  EXPECT_EQ(decompress(block.stream('9')).out, "a");
}

TEST(Bzip2Test, TheGreatestSizeStopsExpansion) {
  const std::string stream = compress(std::string(10'000'000, 'z'));
  EXPECT_LT(stream.size(), 100U);
  EXPECT_TRUE(decompress(stream, kWhole, 10'000'000).done);
  const Outcome outcome = decompress(stream, kWhole, 9'999'999);
  EXPECT_FALSE(outcome.done);
  EXPECT_LE(outcome.out.size(), 9'999'999U);
  EXPECT_NE(outcome.log.find("maxDecompressedSize: 9999999"), std::string::npos) << outcome.log;
}

TEST(Bzip2Test, MoreAndEndNeedABegin) {
  Bzip2Engine engine;
  DataBuffer out;
  const std::function<bool(LogBase&)> calls[] = {
      [&](LogBase& log) { return engine.moreCompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.endCompress(out, log, nullptr); },
      [&](LogBase& log) { return engine.moreDecompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.endDecompress(out, log, nullptr); }};
  for (const auto& call : calls) {
    RecordedLog log;
    EXPECT_FALSE(call(log));
    EXPECT_EQ(log.text(), "error: Bzip2 not initialized.\n");
  }
}

TEST(Bzip2Test, AnEngineWorksAgainAfterAFailure) {
  Bzip2Engine engine;
  RecordedLog log;
  DataBuffer out;
  EXPECT_FALSE(engine.decompressBuffer(asBytes("BZh9 broken from here on"), out, log, nullptr));
  EXPECT_TRUE(engine.decompressBuffer(asBytes(compress("good")), out, log, nullptr));
  EXPECT_EQ(out.text(), "good");
}

class AbortAt final : public ProgressEvent {
 public:
  explicit AbortAt(std::uint32_t percent) : percent_(percent) {}
  void PercentDone(std::uint32_t percent, bool& abort) override { abort = percent >= percent_; }

 private:
  std::uint32_t percent_;
};

TEST(Bzip2Test, ReportsInputAndStopsWhenAsked) {
  const std::string text = noise(3'000'000, 4);
  const std::string stream = compress(text);
  const auto run = [](const std::string& in, bool packs, std::uint32_t percent, bool& done) {
    AbortAt event(percent);
    ProgressMonitor monitor(&event, static_cast<std::int64_t>(in.size()));
    Bzip2Engine engine;
    RecordedLog log;
    DataBuffer out;
    done = packs ? engine.compressBuffer(asBytes(in), out, log, &monitor)
                 : engine.decompressBuffer(asBytes(in), out, log, &monitor);
    EXPECT_EQ(log.text(), done ? "" : "error: Bzip2 aborted by application\n");
    return monitor.consumed();
  };
  for (const bool packs : {true, false}) {
    const std::string& in = packs ? text : stream;
    bool done = false;
    EXPECT_EQ(run(in, packs, 101, done), static_cast<std::int64_t>(in.size()));
    EXPECT_TRUE(done);
    EXPECT_LT(run(in, packs, 50, done), static_cast<std::int64_t>(in.size() / 10 * 6));
    EXPECT_FALSE(done);
  }
}

TEST(Bzip2Test, ExpandsIntoASinkWithoutHoldingTheOutput) {
  const std::string zeros = compress(std::string(100'000'000, '\0'));
  std::string room(1'000'000, 'x');
  MemoryDataSource source(asBytes(zeros));
  MemoryDataSink small({reinterpret_cast<std::uint8_t*>(room.data()), room.size()});
  Bzip2Engine engine;
  RecordedLog log;
  EXPECT_FALSE(engine.decompressSource(source, small, log, nullptr));
  EXPECT_GT(small.size(), 900'000);  // it was filled before the rest was made

  DataBuffer kept;
  MemoryDataSource again(asBytes(zeros));
  BufferDataSink all(kept);
  EXPECT_TRUE(engine.decompressSource(again, all, log, nullptr));
  EXPECT_EQ(all.size(), 100'000'000);
}

TEST(Bzip2Test, MutationsNeitherCrashNorHang) {
  std::mt19937 random(7);
  const std::string text = noise(3000, 30);
  const std::string stream = compress(text) + compress("tail");
  for (int i = 0; i < 2000; ++i) {
    std::string mutated = stream;
    for (std::size_t n = 1 + random() % 3; n > 0; --n)
      mutated[random() % mutated.size()] = static_cast<char>(random());
    const Outcome outcome = decompress(mutated, 1 + random() % 5000, 50'000'000);
    // What a checksum covers is either right or refused.
    EXPECT_TRUE(!outcome.done || outcome.out == text || outcome.out == text + "tail");
  }
}

TEST(Bzip2RotationSortTest, SortsAsComparingRotationsDoes) {
  std::mt19937 random(3);
  Bzip2RotationSort sort;
  for (unsigned i = 0; i < 3000; ++i) {
    std::string text = noise(1 + random() % 70, 1 + random() % 4, i);
    const std::size_t period = 1 + random() % 20;
    if (i % 3 == 0)
      for (std::size_t k = period; k < text.size(); ++k) text[k] = text[k - period];
    std::vector<std::string> rotations;
    for (std::size_t k = 0; k < text.size(); ++k)
      rotations.push_back(text.substr(k) + text.substr(0, k));
    std::sort(rotations.begin(), rotations.end());
    std::string expected;
    for (const std::string& rotation : rotations) expected += rotation.back();
    std::string column(text.size(), '\0');
    const std::size_t origin =
        sort.run(asBytes(text), reinterpret_cast<std::uint8_t*>(column.data()));
    ASSERT_EQ(hex(column), hex(expected)) << hex(text);
    ASSERT_EQ(rotations[origin], text);
  }
}

TEST(Bzip2HuffmanTest, CodesAreCompleteShortAndWithinTheirLimit) {
  std::vector<std::uint32_t> fibonacci = {1, 1};
  while (fibonacci.size() < 40) fibonacci.push_back(*(fibonacci.end() - 2) + fibonacci.back());
  struct Row {
    std::vector<std::uint32_t> frequencies;
    unsigned limit;
    std::uint64_t cost;  // of the best code; 0: not known
  };
  const Row rows[] = {{{1, 1}, 17, 2},
                      {{5, 9, 12, 13, 16, 45}, 17, 224},
                      {{0, 0, 0, 8}, 17, 8},
                      {{1, 1, 2, 3, 5, 8, 13, 21}, 17, 132},
                      {{1, 1, 2, 3, 5, 8, 13, 21}, 4, 0},
                      {fibonacci, 17, 0},
                      {std::vector<std::uint32_t>(258, 1), 17, 0},
                      {std::vector<std::uint32_t>(258, 0), 9, 0}};
  for (const Row& row : rows) {
    std::vector<std::uint8_t> lengths(row.frequencies.size());
    bzip2CodeLengths(row.frequencies, row.limit, lengths.data());
    std::uint64_t space = 0, cost = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      ASSERT_GE(lengths[i], 1U);
      ASSERT_LE(lengths[i], row.limit);
      space += std::uint64_t{1} << (row.limit - lengths[i]);
      cost += std::uint64_t{row.frequencies[i]} * lengths[i];
    }
    EXPECT_EQ(space, std::uint64_t{1} << row.limit);
    EXPECT_TRUE(row.cost == 0 || row.cost == cost) << cost;
  }
}

}  // namespace
}  // namespace zantrel::test

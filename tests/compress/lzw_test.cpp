#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "compress/lzw_decoder.h"
#include "compress/lzw_engine.h"
#include "compress/noise.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "frame/progress_monitor.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

struct Outcome {
  bool done = false;
  std::string out;
  std::string log;
};

Outcome decompress(std::string_view stream, std::uint64_t limit = 0) {
  LzwEngine engine;
  engine.setMaxDecompressedSize(limit);
  RecordedLog log;
  DataBuffer out;
  const bool done = engine.decompressBuffer(asBytes(stream), out, log, nullptr);
  return {done, std::string(out.text()), log.text()};
}

std::string compress(std::string_view text) {
  LzwEngine engine;
  RecordedLog log;
  DataBuffer out;
  EXPECT_TRUE(engine.compressBuffer(asBytes(text), out, log, nullptr)) << log.text();
  return std::string(out.text());
}

// The text of a stream fed in pieces of one size; "failed" if it is refused.
std::string inPieces(std::string_view stream, std::size_t piece) {
  const auto decoder = std::make_unique<LzwDecoder>();
  RecordedLog log;
  std::string text;
  for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size()))) {
    decoder->feed(asBytes(stream.substr(0, piece)));
    LzwDecoder::Status status;
    while ((status = decoder->advance(log)) == LzwDecoder::Status::hasOutput)
      text += asText(decoder->output());
    if (status == LzwDecoder::Status::failed) return "failed";
  }
  return decoder->finish(log) ? text : "failed";
}

// Codes of 9 bits behind a header.
std::string stream(unsigned header, const std::vector<unsigned>& codes) {
  std::string bytes = {'\x1F', '\x9D', static_cast<char>(header)};
  std::uint64_t bits = 0;
  unsigned count = 0;
  for (const unsigned code : codes) {
    bits |= std::uint64_t{code} << count;
    for (count += 9; count >= 8; count -= 8, bits >>= 8) bytes += static_cast<char>(bits);
  }
  return count > 0 ? bytes + static_cast<char>(bits) : bytes;
}

TEST(LzwTest, ReadsStreamsOfAnotherProgram) {
  for (const auto& row : readTable(std::string(ZANTREL_TEST_DATA) + "/compress/lzw.tsv")) {
    std::string plain;
    for (std::size_t i = std::stoul(row[2]); i > 0; --i) plain += unescape(row[1]);
    const Outcome outcome = decompress(unhex(row[0]));
    EXPECT_TRUE(outcome.done && outcome.out == plain) << row[0];
    for (const std::size_t piece : {1U, 2U, 5U})
      EXPECT_TRUE(inPieces(unhex(row[0]), piece) == plain);
  }
}

TEST(LzwTest, RestoresEveryKindOfText) {
  for (const unsigned values : {1U, 2U, 10U, 256U})
    for (const std::size_t size : {0U, 1U, 2U, 300U, 5000U, 100'000U, 1'000'000U}) {
      const std::string text = noise(size, values);
      EXPECT_TRUE(decompress(compress(text)).out == text) << values << " " << size;
    }
}

TEST(LzwTest, TheTableIsClearedWhenItNoLongerFits) {
  const std::string first = noise(400'000, 4);
  std::string second = first;
  for (char& c : second) c = static_cast<char>(c + 'a');
  const std::string packed = compress(first + second);
  EXPECT_TRUE(decompress(packed).out == first + second);
  EXPECT_LT(packed.size(), compress(first).size() * 5 / 2);
}

TEST(LzwTest, TheRestOfAGroupIsSkippedWhenTheTableIsCleared) {
  std::string bytes = stream(0x90, {'a', 'b', 256});
  bytes.resize(3 + 9, '?');
  bytes += stream(0x90, {'c', 'd', 257}).substr(3);
  EXPECT_EQ(decompress(bytes).out, "abcdcd");
}

TEST(LzwTest, WithoutBlockModeCode256IsAString) {
  EXPECT_EQ(decompress(stream(0x10, {'a', 256, 257})).out, "aaaaaa");
}

TEST(LzwTest, AHeaderOfNineBitsLeadsToCodesOfTenDeliberately) {
  // 255 codes define the rest of what 9 bits can say; the 257th is 10 bits wide, in a new group.
  std::string bytes = stream(0x89, std::vector<unsigned>(256, 'x'));
  ASSERT_EQ(bytes.size(), 3U + 32 * 9);
  bytes += std::string("\x79\0", 2);
  EXPECT_EQ(decompress(bytes).out, std::string(256, 'x') + "y");
}

TEST(LzwTest, RefusesWhatNoEncoderWrites) {
  struct Row {
    std::string stream;
    std::string log;
  };
  const std::string undefined = "error: The LZW data hold a code that is not defined.\n";
  const std::string width =
      "error: The .Z header asks for codes of a width that is not supported.\nmaxBits: ";
  const Row rows[] = {
      {"", "error: The .Z data ended prematurely.\n"},
      {"\x1F\x9D", "error: The .Z data ended prematurely.\n"},
      {"\x1F\x8B\x08", "error: The data do not begin with a .Z header.\n"},
      {stream(0x88, {'a'}), width + "8\n"},
      {stream(0x91, {'a'}), width + "17\n"},
      {stream(0x90, {257}), undefined},
      {stream(0x90, {'a', 258}), undefined},
      {stream(0x90, {'a', 'b', 300}), undefined},
      {stream(0x90, {'a', 'b', 256, 0, 0, 0, 0, 0, 257}), undefined},
      {stream(0x10, {256}), undefined},
  };
  for (const Row& row : rows) {
    const Outcome outcome = decompress(row.stream);
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(outcome.log, row.log);
  }
}

TEST(LzwTest, WhatStandsInFrontOfAWrongCodeIsKept) {
  EXPECT_EQ(decompress(stream(0x90, {'a', 'b', 257, 300})).out, "abab");
}

TEST(LzwTest, ReservedBitsOfTheHeaderAreIgnored) {
  const Outcome outcome = decompress(stream(0xF0, {'a'}));
  EXPECT_EQ(outcome.out, "a");
  EXPECT_EQ(outcome.log, "info: Reserved bits of the .Z header were ignored.\n");
}

TEST(LzwTest, EveryTruncationIsAShorterText) {
  const std::string text = noise(3000, 5);
  const std::string packed = compress(text);
  for (std::size_t size = 3; size < packed.size(); ++size) {
    const Outcome outcome = decompress(std::string_view(packed).substr(0, size));
    EXPECT_TRUE(outcome.done);
    EXPECT_TRUE(text.starts_with(outcome.out)) << size;
  }
}

TEST(LzwTest, TheGreatestSizeStopsExpansion) {
  const std::string packed = compress(std::string(10'000'000, 'z'));
  EXPECT_TRUE(decompress(packed, 10'000'000).done);
  const Outcome outcome = decompress(packed, 9'999'999);
  EXPECT_FALSE(outcome.done);
  EXPECT_LE(outcome.out.size(), 9'999'999U);
}

TEST(LzwTest, StreamsInPiecesAreNotOfferedDeliberately) {
  LzwEngine engine;
  DataBuffer out;
  const std::function<bool(LogBase&)> calls[] = {
      [&](LogBase& log) { return engine.beginCompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.moreCompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.endCompress(out, log, nullptr); },
      [&](LogBase& log) { return engine.beginDecompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.moreDecompress({}, out, log, nullptr); },
      [&](LogBase& log) { return engine.endDecompress(out, log, nullptr); }};
  for (const auto& call : calls) {
    RecordedLog log;
    EXPECT_FALSE(call(log));
    EXPECT_EQ(log.text(), "error: LZW begin/more/end not implemented yet.\n");
  }
}

class AbortAt final : public ProgressEvent {
 public:
  void PercentDone(std::uint32_t percent, bool& abort) override { abort = percent >= 50; }
};

TEST(LzwTest, WholeSourcesGoThroughAndStopWhenAsked) {
  const std::string text = noise(700'000, 40);
  LzwEngine engine;
  RecordedLog log;
  DataBuffer packed, unpacked;
  MemoryDataSource plain(asBytes(text));
  BufferDataSink packedSink(packed), unpackedSink(unpacked);
  ASSERT_TRUE(engine.compressSource(plain, packedSink, log, nullptr));
  MemoryDataSource packedSource(packed.bytes());
  ASSERT_TRUE(engine.decompressSource(packedSource, unpackedSink, log, nullptr));
  EXPECT_TRUE(unpacked.text() == text);

  AbortAt event;
  for (const bool packs : {true, false}) {
    const ByteSpan in = packs ? asBytes(text) : packed.bytes();
    ProgressMonitor monitor(&event, static_cast<std::int64_t>(in.size()));
    RecordedLog stopped;
    DataBuffer out;
    EXPECT_FALSE(packs ? engine.compressBuffer(in, out, stopped, &monitor)
                       : engine.decompressBuffer(in, out, stopped, &monitor));
    EXPECT_EQ(stopped.text(), "error: LZW aborted by application\n");
    EXPECT_LT(monitor.consumed(), monitor.total());
  }
}

TEST(LzwTest, MutationsNeitherCrashNorHang) {
  std::mt19937 random(7);
  const std::string packed = compress(noise(20'000, 30));
  for (int i = 0; i < 1000; ++i) {
    std::string mutated = packed;
    mutated[2 + random() % (mutated.size() - 2)] = static_cast<char>(random());
    const Outcome outcome = decompress(mutated, 100'000'000);
    EXPECT_LT(outcome.out.size(), 100'000'001U);
    EXPECT_EQ(inPieces(mutated, 1 + random() % 999), outcome.done ? outcome.out : "failed");
  }
}

}  // namespace
}  // namespace zantrel::test

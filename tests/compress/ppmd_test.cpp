// The PPMd engine. That its bytes are those of other programs is proven beside them in the interop
// tests.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "compress/ppmd_engine.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "frame/progress_monitor.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

struct Model {
  unsigned order = PpmdEngine::kDefaultOrder;
  unsigned memoryMb = 1;
  PpmdRestore restore = PpmdRestore::Restart;
};

// Text with the habits of text: words that come again, names that do not, and now and then noise.
std::string sampleText(std::size_t size, unsigned seed = 1) {
  std::mt19937 random(seed);
  std::vector<std::string> words;
  for (int i = 0; i < 3000; ++i) {
    std::string word;
    for (auto n = 2 + random() % 8; n > 0; --n) word += static_cast<char>('a' + random() % 26);
    words.push_back(word);
  }
  std::string text;
  while (text.size() < size) {
    const auto pick = random() % 100;
    if (pick < 90)
      text += words[(random() % 60) * (random() % 50)] + " ";
    else if (pick < 97)
      text += "\xC3\xA9t\xC3\xA9 " + std::to_string(random()) + "\n";
    else
      for (int i = 0; i < 30; ++i) text += static_cast<char>(random());
  }
  text.resize(size);
  return text;
}

std::string compress(const std::string& text, const Model& model = {}, std::size_t piece = 0) {
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  engine.setModel(model.order, model.memoryMb, model.restore);
  if (piece == 0) {
    EXPECT_TRUE(engine.compressBuffer(asBytes(text), out, log, nullptr)) << log.text();
    return std::string(out.text());
  }
  EXPECT_TRUE(engine.beginCompress({}, out, log, nullptr));
  for (std::size_t at = 0; at < text.size(); at += piece)
    EXPECT_TRUE(
        engine.moreCompress(asBytes(std::string_view(text).substr(at, piece)), out, log, nullptr));
  EXPECT_TRUE(engine.endCompress(out, log, nullptr));
  return std::string(out.text());
}

struct Decompressed {
  bool succeeded = false;
  std::string text;
  std::string log;
};

Decompressed decompress(std::string_view data, std::size_t piece = 0) {
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  bool done = true;
  if (piece == 0) {
    done = engine.decompressBuffer(asBytes(data), out, log, nullptr);
  } else {
    done = engine.beginDecompress({}, out, log, nullptr);
    for (std::size_t at = 0; done && at < data.size(); at += piece)
      done = engine.moreDecompress(asBytes(data.substr(at, piece)), out, log, nullptr);
    done = done && engine.endDecompress(out, log, nullptr);
  }
  return {done, std::string(out.text()), log.text()};
}

TEST(PpmdTest, EveryModelGivesTheTextBack) {
  const std::string texts[] = {"", "a", std::string(100000, 'z'), sampleText(300000),
                               sampleText(70000).substr(0, 65537)};
  for (const unsigned order : {2U, 3U, 8U, 16U})
    for (const PpmdRestore restore : {PpmdRestore::Restart, PpmdRestore::CutOff})
      for (const std::string& text : texts) {
        const std::string data = compress(text, {order, 1, restore});
        const Decompressed back = decompress(data);
        EXPECT_TRUE(back.succeeded) << back.log;
        EXPECT_TRUE(back.text == text) << "order " << order << ", " << text.size() << " bytes";
      }
}

TEST(PpmdTest, FullMemoryIsForgottenOverAndOver) {
  // Several times what a megabyte of model holds.
  const std::string text = sampleText(2000000);
  const std::string restarting = compress(text, {8, 1, PpmdRestore::Restart});
  const std::string cutting = compress(text, {8, 1, PpmdRestore::CutOff});
  EXPECT_NE(restarting.substr(2), cutting.substr(2));
  EXPECT_TRUE(decompress(restarting).text == text);
  EXPECT_TRUE(decompress(cutting).text == text);
}

TEST(PpmdTest, PiecesOfEverySizeMakeTheSameStream) {
  const std::string text = sampleText(5000);
  const std::string data = compress(text);
  for (std::size_t piece = 1; piece < 200; piece += piece < 20 ? 1 : 37) {
    EXPECT_TRUE(compress(text, {}, piece) == data) << piece;
    const Decompressed back = decompress(data, piece);
    EXPECT_TRUE(back.succeeded && back.text == text) << piece << ": " << back.log;
  }
}

TEST(PpmdTest, OutputAppearsWhileInputIsFed) {
  const std::string text = sampleText(100000);
  const std::string data = compress(text);
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  ASSERT_TRUE(engine.beginDecompress(asBytes(std::string_view(data).substr(0, data.size() / 2)),
                                     out, log, nullptr));
  EXPECT_GT(out.getSize(), text.size() / 4);
}

TEST(PpmdTest, TheHeaderTellsTheModel) {
  EXPECT_EQ(hex(compress("x", {8, 16, PpmdRestore::Restart}).substr(0, 2)), "f700");
  EXPECT_EQ(hex(compress("x", {2, 256, PpmdRestore::CutOff}).substr(0, 2)), "f11f");
  EXPECT_EQ(hex(compress("x", {99, 999, PpmdRestore::CutOff}).substr(0, 2)), "ff1f");
  EXPECT_EQ(hex(compress("x", {0, 0, PpmdRestore::Restart}).substr(0, 2)), "0100");
}

TEST(PpmdTest, EveryTruncationFails) {
  const std::string text = sampleText(600);
  const std::string data = compress(text);
  for (std::size_t size = 0; size < data.size(); ++size) {
    const Decompressed back = decompress(std::string_view(data).substr(0, size));
    EXPECT_FALSE(back.succeeded) << size;
    EXPECT_NE(back.log.find("error: The PPMd data ended prematurely."), std::string::npos)
        << size << ": " << back.log;
    EXPECT_EQ(text.compare(0, back.text.size(), back.text), 0) << size;
  }
}

TEST(PpmdTest, BytesAfterTheEndAreIgnoredWithAnInfo) {
  const std::string data = compress("text");
  for (const std::size_t surplus : {1U, 50U, 200U, 100000U}) {
    const Decompressed back = decompress(data + std::string(surplus, '\x55'));
    EXPECT_TRUE(back.succeeded) << back.log;
    EXPECT_EQ(back.text, "text");
    EXPECT_EQ(back.log, "info: Bytes after the end of the PPMd data were ignored.\n") << surplus;
  }
  EXPECT_EQ(decompress(data).log, "");
}

TEST(PpmdTest, HeadersThatNoModelHasAreRefused) {
  for (const std::string header : {"\x00\x00", "\xF0\x00", "\xF7\x20", "\xF7\xF0"}) {
    const Decompressed back = decompress(std::string(header.data(), 2) + "123456789");
    EXPECT_FALSE(back.succeeded);
    EXPECT_NE(back.log.find("a header that is not supported"), std::string::npos) << back.log;
  }
}

TEST(PpmdTest, NoiseEndsSomewhereWithoutHarm) {
  std::mt19937 random(5);
  for (int i = 0; i < 300; ++i) {
    std::string data = std::string("\x07\x00", 2);
    for (auto n = random() % 3000; n > 0; --n) data += static_cast<char>(random());
    const Decompressed back = decompress(data);
    EXPECT_EQ(back.succeeded, back.log.find("error: ") == std::string::npos);
  }
}

TEST(PpmdTest, TheLimitStopsDataThatExpandTooFar) {
  const std::string data = compress(std::string(5000000, 'b'));
  ASSERT_LT(data.size(), 5000U);
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  engine.setMaxDecompressedSize(100000);
  EXPECT_FALSE(engine.decompressBuffer(asBytes(data), out, log, nullptr));
  EXPECT_TRUE(log.has("larger than the limit")) << log.text();
  EXPECT_LE(out.getSize(), 100000U);
  out.clear();
  engine.setMaxDecompressedSize(5000000);
  EXPECT_TRUE(engine.decompressBuffer(asBytes(data), out, log, nullptr));
}

TEST(PpmdTest, CallsOutOfTurnFail) {
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  EXPECT_FALSE(engine.moreCompress(asBytes("a"), out, log, nullptr));
  EXPECT_FALSE(engine.endCompress(out, log, nullptr));
  EXPECT_FALSE(engine.moreDecompress(asBytes("a"), out, log, nullptr));
  EXPECT_FALSE(engine.endDecompress(out, log, nullptr));
  EXPECT_EQ(out.getSize(), 0U);
  EXPECT_TRUE(log.has("error: PPMd not initialized."));
}

class Aborting final : public ProgressEvent {
 public:
  void PercentDone(std::uint32_t, bool& abort) override { abort = true; }
  void AbortCheck(bool& abort) override { abort = true; }
};

TEST(PpmdTest, AnAbortEndsTheCallAndTheEngineStartsAfresh) {
  const std::string text = sampleText(500000);
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer out;
  Aborting events;
  ProgressMonitor progress(&events, static_cast<std::int64_t>(text.size()));
  EXPECT_FALSE(engine.compressBuffer(asBytes(text), out, log, &progress));
  EXPECT_TRUE(log.has("error: PPMd aborted by application"));
  out.clear();
  ASSERT_TRUE(engine.compressBuffer(asBytes(text), out, log, nullptr));
  EXPECT_TRUE(decompress(out.text()).text == text);
}

TEST(PpmdTest, SourcesAndSinksGiveWhatMemoryGives) {
  const std::string text = sampleText(200000);
  PpmdEngine engine;
  RecordedLog log;
  DataBuffer data;
  MemoryDataSource source(asBytes(text));
  BufferDataSink sink(data);
  engine.setModel(8, 1);
  ASSERT_TRUE(engine.compressSource(source, sink, log, nullptr));
  EXPECT_TRUE(data.text() == compress(text));
  DataBuffer back;
  MemoryDataSource packed(data.bytes());
  BufferDataSink unpacked(back);
  ASSERT_TRUE(engine.decompressSource(packed, unpacked, log, nullptr)) << log.text();
  EXPECT_TRUE(back.text() == text);
}

}  // namespace
}  // namespace zantrel::test

#include "compress/zantrel_deflate.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "compress/deflate_data.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/storage.h"
#include "frame/progress_event.h"
#include "frame/progress_monitor.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

/// Asks to stop at the n-th callback.
struct Stopper final : ProgressEvent {
  explicit Stopper(int at) : left(at) {}
  void PercentDone(std::uint32_t, bool& abort) override { abort = --left == 0; }
  int left;
};

/// A call, what it logs, and what it answers.
struct Outcome {
  bool done;
  std::string out;
  std::string log;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* to) {
  *to << outcome.done << " '" << outcome.out << "' " << outcome.log;
}

using Call = std::function<bool(ZantrelDeflate&, DataBuffer&, LogBase&)>;

Outcome run(ZantrelDeflate& engine, const Call& call) {
  RecordedLog log;
  DataBuffer out;
  const bool done = call(engine, out, log);
  return {done, std::string(out.text()), log.text()};
}

Outcome run(const Call& call) {
  ZantrelDeflate engine;
  return run(engine, call);
}

Outcome zlibExpanded(std::string_view in) {
  return run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.zlibDecompress(asBytes(in), out, log);
  });
}

Outcome zlibExpandedInPieces(std::string_view in) {
  return run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.beginZlibDecompress(asBytes(in), out, log);
  });
}

std::string compressed(std::string_view text, int level = 6) {
  ZantrelDeflate engine;
  engine.setLevel(level);
  return deflated(engine, text);
}

constexpr char kNotEnough[] = "error: Not enough data for beginning Zlib decompression.\n";
constexpr char kNotEnoughWithDict[] =
    "error: Not enough data for beginning Zlib decompression with dict.\n";
constexpr char kPremature[] = "error: Deflated data ended prematurely.\n";

TEST(ZantrelDeflateTest, ZlibOutputHasOneHeaderForAllLevelsAndTheAdlerOfTheInput) {
  for (int level = 0; level <= 9; ++level) {
    const Outcome made = run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
      engine.setLevel(level);
      return engine.zlibCompress(asBytes("Wikipedia"), out, log);
    });
    ASSERT_TRUE(made.done);
    EXPECT_EQ(made.out.substr(0, 2), "\x78\x9C");
    EXPECT_EQ(made.out.substr(made.out.size() - 4), "\x11\xE6\x03\x98");
    EXPECT_EQ(made.out.substr(2, made.out.size() - 6), compressed("Wikipedia", level));
    EXPECT_EQ(zlibExpanded(made.out), (Outcome{true, "Wikipedia", ""}));
  }
}

TEST(ZantrelDeflateTest, AStreamWithZlibHeaderHasNoAdler) {
  const Outcome made = run([](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.beginZlibCompress(asBytes("Wiki"), out, log) &&
           engine.moreCompress(asBytes("pedia"), out, log, nullptr) &&
           engine.endCompress(out, log, nullptr);
  });
  EXPECT_EQ(made, (Outcome{true, "\x78\x9C" + compressed("Wikipedia"), ""}));
}

TEST(ZantrelDeflateTest, OfAZlibHeaderTheDictionaryFlagAloneCounts) {
  const std::string stream = compressed("text");
  using namespace std::string_literals;
  const struct {
    std::string in;
    Outcome expected;
  } kRows[] = {
      {"", {false, "", kNotEnough}},
      {"\x78", {false, "", kNotEnough}},
      {"\x78\x9C", {true, "", ""}},
      {"\x78\xBC", {false, "", kNotEnoughWithDict}},
      {"\x78\xBC\x01\x02\x03", {false, "", kNotEnoughWithDict}},
      {"\x78\xBC\x01\x02\x03\x04", {true, "", ""}},
      {"\x78\xBC\x01\x02\x03\x04" + stream, {true, "text", ""}},
      {"\x00\x00"s + stream, {true, "text", ""}},  // neither method nor check bits are looked at
      {"\xFF\xDF" + stream + "\x01\x02\x03\x04", {true, "text", ""}},  // nor the Adler-32
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(zlibExpanded(row.in), row.expected) << hex(row.in);
    EXPECT_EQ(zlibExpandedInPieces(row.in), row.expected) << hex(row.in);
  }
}

TEST(ZantrelDeflateTest, EveryTruncationOfAStreamIsPremature) {
  for (const int level : {0, 1, 6}) {
    const std::string text = prose(3000) + noise(5000) + "end";
    const std::string stream = compressed(text, level);
    for (std::size_t size = 0; size < stream.size(); ++size) {
      const auto part = asBytes(stream).first(size);
      const auto one = run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
        return engine.inflateBuffer(part, out, log);
      });
      ASSERT_FALSE(one.done) << size;
      ASSERT_EQ(one.log, kPremature) << size;
      ASSERT_TRUE(text.starts_with(one.out)) << size;
      const auto pieces = run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
        return engine.beginDecompress(part, out, log) && engine.endDecompress(out, log, nullptr);
      });
      ASSERT_EQ(pieces, one) << size;
      const auto source = run([=](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
        MemoryDataSource from(part);
        BufferDataSink to(out);
        return engine.decompressSource(from, to, log, nullptr);
      });
      ASSERT_EQ(source, one) << size;
    }
  }
}

TEST(ZantrelDeflateTest, AnErrorInTheStreamIsLoggedByItsNumberAndOutputIsKept) {
  // A stored block "ab", then the reserved block type.
  const std::string stream(
      "\x00\x02\x00\xFD\xFF"
      "ab\x07",
      8);
  EXPECT_EQ(run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
              return engine.inflateBuffer(asBytes(stream), out, log);
            }),
            (Outcome{false, "ab", "deflateError: 1\n"}));
  EXPECT_EQ(run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
              return engine.beginDecompress(asBytes(stream), out, log);
            }),
            (Outcome{false, "ab", "InflateErr: 1\n"}));
  EXPECT_EQ(
      run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
        MemoryDataSource from(asBytes(stream));
        BufferDataSink to(out);
        return engine.decompressSource(from, to, log, nullptr);
      }),
      (Outcome{false, "ab", "InflateErrorCode: 1\nerror: Inflate from data source failed.\n"}));
}

TEST(ZantrelDeflateTest, MoreAndEndNeedABegin) {
  const auto more = [](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.moreCompress(asBytes("x"), out, log, nullptr);
  };
  const auto end = [](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.endCompress(out, log, nullptr);
  };
  const auto moreInflate = [](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.moreDecompress(asBytes("x"), out, log);
  };
  const auto endInflate = [](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    return engine.endDecompress(out, log, nullptr);
  };
  const Outcome noDeflater{false, "", "error: Deflate not initialized.\n"};
  const Outcome noInflater{false, "", "error: Inflator not initialized.\n"};
  ZantrelDeflate engine;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(run(engine, more), noDeflater);
    EXPECT_EQ(run(engine, end), noDeflater);
    EXPECT_EQ(run(engine, moreInflate), noInflater);
    EXPECT_EQ(run(engine, endInflate), noInflater);
    // The same after a stream has ended, and after one has failed.
    EXPECT_EQ(deflated(engine, "text", 1), compressed("text"));
    LogNull log;
    DataBuffer out;
    EXPECT_FALSE(engine.beginDecompress(asBytes("\xFF"), out, log));
  }
}

TEST(ZantrelDeflateTest, AbortsSayWhereTheyCame) {
  const std::string text = noise(1 << 20);
  const auto deflate = [&](int stopAt, std::size_t first) {
    Stopper stopper(stopAt);
    ProgressMonitor progress(&stopper, static_cast<std::int64_t>(text.size()));
    ZantrelDeflate engine;
    const Outcome outcome = run(engine, [&](ZantrelDeflate& e, DataBuffer& out, LogBase& log) {
      return e.beginCompress(asBytes(text).first(first), out, log, &progress) &&
             e.moreCompress(asBytes(text).subspan(first), out, log, &progress) &&
             e.endCompress(out, log, &progress);
    });
    EXPECT_EQ(deflated(engine, "text"), compressed("text"));  // it may be used again
    return outcome;
  };
  const Outcome begin = deflate(2, text.size());
  EXPECT_EQ(begin.log, "error: Deflate aborted by application (1)\n");
  EXPECT_GT(begin.out.size(), 0U);
  EXPECT_LT(begin.out.size(), text.size() / 2);
  EXPECT_EQ(deflate(2, 0).log, "error: Deflate aborted by application (2)\n");

  const std::string stream = compressed(text);
  Stopper stopper(2);
  ProgressMonitor progress(&stopper, static_cast<std::int64_t>(stream.size()));
  const Outcome inflate = run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    MemoryDataSource from(asBytes(stream));
    BufferDataSink to(out);
    return engine.decompressSource(from, to, log, &progress);
  });
  EXPECT_EQ(inflate.log,
            "error: Inflate aborted by application event callback.\n"
            "error: Inflate from data source failed.\n");
  EXPECT_LT(inflate.out.size(), text.size());
}

TEST(ZantrelDeflateTest, AnAbortAskedForBetweenCallsStopsTheEnd) {
  Stopper stopper(1);
  ProgressMonitor progress(&stopper, 4);
  const Outcome outcome = run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    if (!engine.beginCompress(asBytes("text"), out, log, nullptr)) return false;
    progress.consume(4);
    return engine.endCompress(out, log, &progress);
  });
  EXPECT_EQ(outcome.log, "error: Deflate aborted by application (3)\n");
}

TEST(ZantrelDeflateTest, TheGreatestSizeHoldsInEveryForm) {
  const std::string text = prose(200000);
  const std::string stream = compressed(text);
  const std::vector<Call> forms = {[&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
                                     return engine.inflateBuffer(asBytes(stream), out, log);
                                   },
                                   [&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
                                     return engine.beginDecompress(asBytes(stream), out, log);
                                   },
                                   [&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
                                     MemoryDataSource from(asBytes(stream));
                                     BufferDataSink to(out);
                                     return engine.decompressSource(from, to, log, nullptr);
                                   }};
  for (const Call& form : forms) {
    for (const std::size_t limit : {1UL, 59999UL, 60000UL, 60001UL, 199999UL, 200000UL, 200001UL}) {
      ZantrelDeflate engine;
      engine.setMaxDecompressedSize(limit);
      const Outcome outcome = run(engine, form);
      EXPECT_EQ(outcome.done, limit >= text.size()) << limit;
      EXPECT_TRUE(outcome.out == text.substr(0, limit)) << limit;
      EXPECT_EQ(outcome.log.find("larger than the limit that was set") != std::string::npos,
                limit < text.size());
    }
  }
}

TEST(ZantrelDeflateTest, WhatFollowsTheFinalBlockIsCountedAndLeftAlone) {
  const std::string stream = compressed("text");
  for (const std::size_t piece : {1U, 2U, 7U, 100U}) {
    ZantrelDeflate engine;
    LogNull log;
    DataBuffer out;
    ASSERT_TRUE(engine.beginDecompress({}, out, log));
    std::string rest = stream + "more";
    while (!engine.reachedEnd()) {
      const std::string part = rest.substr(0, piece);
      ASSERT_TRUE(engine.moreDecompress(asBytes(part), out, log));
      rest.erase(0, part.size() - engine.unusedInput());
    }
    EXPECT_EQ(rest, "more");
    EXPECT_TRUE(engine.moreDecompress(asBytes("x"), out, log));
    EXPECT_EQ(engine.unusedInput(), 1U);
    EXPECT_TRUE(engine.endDecompress(out, log, nullptr));
    EXPECT_EQ(out.text(), "text");
  }
}

TEST(ZantrelDeflateTest, SourcesAndSinksGiveTheBytesOfBuffers) {
  const std::string text = prose(500000) + noise(100000);
  ZantrelDeflate engine;
  LogNull log;
  DataBuffer packed, unpacked;
  MemoryDataSource source(asBytes(text));
  BufferDataSink sink(packed);
  ASSERT_TRUE(engine.compressSource(source, sink, log, nullptr));
  EXPECT_TRUE(packed.text() == compressed(text));
  MemoryDataSource packedSource(packed.bytes());
  BufferDataSink unpackedSink(unpacked);
  ASSERT_TRUE(engine.decompressSource(packedSource, unpackedSink, log, nullptr));
  EXPECT_TRUE(unpacked.text() == text);
}

TEST(ZantrelDeflateTest, LackOfMemoryForTheOutputFailsAndSaysSo) {
  const std::string text = noise(100000);
  const std::string stream = compressed(text);
  ZantrelDeflate engine;
  for (const Call& call : {Call([&](ZantrelDeflate&e, DataBuffer&out, LogBase&log) {
                             return e.deflateBuffer(asBytes(text), out, log);
                           }),
                           Call([&](ZantrelDeflate&e, DataBuffer&out, LogBase&log) {
                             return e.beginDecompress(asBytes(stream), out, log);
                           })}) {
    const storage::ScopedAllocationFault fault(0);
    const Outcome outcome = run(engine, call);
    EXPECT_EQ(outcome, (Outcome{false, "", "error: Not enough memory.\n"}));
  }
  EXPECT_TRUE(deflated(engine, text) == stream);
}

TEST(ZantrelDeflateTest, TheTraceNamesTheStates) {
  const std::string stream = compressed("text");
  const Outcome traced = run([&](ZantrelDeflate& engine, DataBuffer& out, LogBase& log) {
    engine.setTrace(true);
    return engine.beginDecompress(asBytes(stream).first(2), out, log) &&
           engine.moreDecompress(asBytes(stream).subspan(2), out, log);
  });
  EXPECT_TRUE(traced.done);
  EXPECT_NE(traced.log.find("need fixed data"), std::string::npos);
  EXPECT_NE(traced.log.find("Finished because state = -1 and lastBlock bit is set."),
            std::string::npos);
}

}  // namespace
}  // namespace zantrel::test

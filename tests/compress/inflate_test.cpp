#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "compress/inflate_state2.h"
#include "compress/zip_crc.h"
#include "core/storage.h"
#include "support/cpu_paths.h"
#include "support/deflate_streams.h"
#include "support/recorded_log.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

using Status = InflateState2::Status;

struct Result {
  Status status;
  InflateError error;
  std::string output;
  std::size_t left;  // bytes of input not taken
};

Result whole(std::string_view stream, std::uint64_t limit = 0) {
  InflateState2 state;
  DataBuffer out;
  ByteSpan in = asBytes(stream);
  const Status status = state.inflateAll(in, out, limit);
  return {status, state.errorCode(), std::string(out.text()), in.size()};
}

// Feeds pieces of the input and offers room for pieces of output until neither goes on.
Result inPieces(InflateState2& state, std::string_view stream, std::size_t inStep,
                std::size_t outStep) {
  std::vector<std::uint8_t> room(outStep);
  std::string output;
  Status status = Status::more;
  std::size_t fed = 0;
  ByteSpan piece;
  while (status == Status::more) {
    if (piece.empty()) {
      const std::size_t count = std::min(inStep, stream.size() - fed);
      piece = asBytes(stream).subspan(fed, count);
      fed += count;
    }
    const std::size_t before = piece.size();
    std::size_t produced = 0;
    status = state.run(piece, room, produced);
    output.append(reinterpret_cast<const char*>(room.data()), produced);
    EXPECT_EQ(state.totalProduced(), output.size());
    if (status == Status::more && piece.size() == before && produced == 0) {
      EXPECT_EQ(fed, stream.size()) << "no progress although there is input";
      break;
    }
  }
  return {status, state.errorCode(), output, stream.size() - fed + piece.size()};
}

Result inPieces(std::string_view stream, std::size_t inStep, std::size_t outStep) {
  InflateState2 state;
  return inPieces(state, stream, inStep, outStep);
}

void expectSame(const Result& result, const Result& expected, const std::string& what) {
  EXPECT_EQ(result.status, expected.status) << what;
  EXPECT_EQ(result.error, expected.error) << what;
  EXPECT_EQ(result.left, expected.left) << what;
  EXPECT_TRUE(result.output == expected.output)
      << what << ": " << result.output.size() << " bytes instead of " << expected.output.size();
}

TEST(InflateTest, PublishedStreamsInOnePieceAndInBytesOnEachCpuPath) {
  const auto rows = readTable(ZANTREL_TEST_DATA "/compress/inflate_streams.tsv");
  ASSERT_GT(rows.size(), 25U);
  onEachCpuPath([&] {
    for (const auto& row : rows) {
      // With bytes behind, the fast loop comes to these short streams too.
      for (const std::size_t padding : {0U, 400U}) {
        if (padding != 0 && row[2] == "premature") continue;
        const std::string stream = unhex(row[1]) + std::string(padding, '\x55');
        const Result once = whole(stream);
        if (row[2] == "ok" || row[2] == "premature") {
          EXPECT_EQ(once.status, row[2] == "ok" ? Status::finished : Status::more) << row[0];
          EXPECT_EQ(std::to_string(once.output.size()), row[4]) << row[0];
          EXPECT_EQ(ZipCRC::getCRC(asBytes(once.output)), std::stoul(row[3], nullptr, 16))
              << row[0];
        } else {
          EXPECT_EQ(once.status, Status::failed) << row[0];
          EXPECT_EQ(std::to_string(static_cast<int>(once.error)), row[2]) << row[0];
        }
        Result bytes = inPieces(stream, 1, 1);
        if (once.status == Status::failed) bytes.left = once.left;  // later bytes may be taken
        expectSame(bytes, once, row[0]);
      }
    }
  });
}

TEST(InflateTest, EveryKindOfBlockCodeAndMatchOnEachCpuPath) {
  onEachCpuPath([] {
    for (std::uint32_t seed = 0; seed < 8; ++seed) {
      const DeflateWriter writer = mixedStream(seed, seed < 5 ? 2000 : 70000);
      const std::string stream = writer.stream() + "behind";
      const Result expected{Status::finished, InflateError::none, writer.output(), 6};
      expectSame(whole(stream), expected, "whole " + std::to_string(seed));
      for (const std::size_t in : {1U, 7U, 40U, 1000U, 65536U}) {
        for (const std::size_t out : {1U, 300U, 400U, 32768U, 65536U})
          expectSame(inPieces(stream, in, out), expected,
                     std::to_string(in) + " into " + std::to_string(out));
      }
    }
  });
}

TEST(InflateTest, EveryTruncationAsksForMoreWithTheOutputSoFar) {
  const DeflateWriter writer = mixedStream(3, 3000);
  std::size_t before = 0;
  for (std::size_t size = 0; size < writer.stream().size(); ++size) {
    const Result result = whole(std::string_view(writer.stream()).substr(0, size));
    ASSERT_EQ(result.status, Status::more) << size;
    ASSERT_EQ(result.left, 0U) << size;
    ASSERT_TRUE(writer.output().starts_with(result.output)) << size;
    ASSERT_GE(result.output.size(), before) << "less output from more input at " << size;
    before = result.output.size();
    expectSame(inPieces(std::string_view(writer.stream()).substr(0, size), 5, 7), result,
               std::to_string(size));
  }
}

TEST(InflateTest, EverySplitGivesTheSameAndBytesBehindAreLeft) {
  const DeflateWriter writer = mixedStream(4, 3000);
  const std::string stream = writer.stream() + std::string(100, 'x');
  std::vector<std::uint8_t> room(writer.output().size() + 1000);
  InflateState2 state;
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    state.reset();
    ByteSpan first = asBytes(stream).first(split);
    std::size_t produced = 0;
    Status status = state.run(first, room, produced);
    std::size_t taken = split - first.size();
    if (status == Status::more) {
      ByteSpan rest = asBytes(stream).subspan(taken);
      std::size_t more = 0;
      status = state.run(rest, std::span(room).subspan(produced), more);
      produced += more;
      taken = stream.size() - rest.size();
    }
    ASSERT_EQ(status, Status::finished) << split;
    ASSERT_EQ(taken, writer.stream().size()) << split;
    ASSERT_EQ(std::string(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(produced)),
              writer.output());
  }
}

TEST(InflateTest, OutputThatFitsExactlyEndsTheStream) {
  for (std::uint32_t seed = 0; seed < 5; ++seed) {
    const DeflateWriter writer = mixedStream(seed, 500);
    const std::size_t size = writer.output().size();
    expectSame(inPieces(writer.stream(), 1000000, size),
               {Status::finished, InflateError::none, writer.output(), 0}, "exact");
    expectSame(whole(writer.stream(), size),
               {Status::finished, InflateError::none, writer.output(), 0}, "limit");
    const Result over = whole(writer.stream(), size - 1);
    EXPECT_EQ(over.status, Status::failed);
    EXPECT_EQ(over.error, InflateError::outputLimit);
    EXPECT_EQ(over.output, writer.output().substr(0, size - 1));
  }
}

TEST(InflateTest, ASmallStreamOfZerosStopsAtItsLimit) {
  const Code literals = fixedLiterals();
  DeflateWriter bomb;
  bomb.blockHead(true, 1);
  bomb.literal(literals, '\0');
  for (int i = 0; i < 100000; ++i) bomb.match(literals, fixedDistances(), 258, 1);
  bomb.endOfBlock(literals);
  const Result stopped = whole(bomb.stream(), 1000000);
  EXPECT_EQ(stopped.error, InflateError::outputLimit);
  EXPECT_EQ(stopped.output, std::string(1000000, '\0'));
  EXPECT_TRUE(whole(bomb.stream()).output == bomb.output());
}

// The symbols that section 3.2.6 reserves, and codes that use none or one of their symbols.
TEST(InflateTest, ReservedSymbolsAndSparseCodes) {
  const Code literals = fixedLiterals();
  const Code distances = fixedDistances();
  std::vector<unsigned> one(257, 0);
  one[256] = 1;
  std::vector<unsigned> two(258, 0);
  two[256] = two[257] = 1;  // the end, and a match of three bytes
  std::vector<unsigned> three(258, 0);
  three['a'] = three[256] = 2;
  three[257] = 1;
  const Code none(std::vector<unsigned>(1, 0));
  const Code single(std::vector<unsigned>(1, 1));
  const Code singleLong(std::vector<unsigned>(1, 2));

  struct Row {
    const char* name;
    InflateError error;
    void (*write)(DeflateWriter&, const Code& literals, const Code& distances);
    Code literals;
    Code distances;
    bool dynamic;
  };
  const auto onlyEnd = [](DeflateWriter& w, const Code& l, const Code&) { w.endOfBlock(l); };
  const auto unused = [](DeflateWriter& w, const Code&, const Code&) { w.bits(1, 1); };
  const auto matched = [](DeflateWriter& w, const Code& l, const Code& d) {
    w.literal(l, 'a');
    w.match(l, d, 3, 1);
    w.endOfBlock(l);
  };
  const auto matchedUnused = [](DeflateWriter& w, const Code& l, const Code&) {
    w.literal(l, 'a');
    w.symbol(l, 257);
    w.bits(1, 1);
  };
  const Row rows[] = {
      {"length 286", InflateError::literalSymbol,
       [](DeflateWriter& w, const Code& l, const Code&) { w.symbol(l, 286); }, literals, distances,
       false},
      {"length 287", InflateError::literalSymbol,
       [](DeflateWriter& w, const Code& l, const Code&) { w.symbol(l, 287); }, literals, distances,
       false},
      {"distance 30", InflateError::distanceSymbol,
       [](DeflateWriter& w, const Code& l, const Code& d) {
         w.literal(l, 'a');
         w.symbol(l, 257);
         w.symbol(d, 30);
       },
       literals, distances, false},
      {"distance 31", InflateError::distanceSymbol,
       [](DeflateWriter& w, const Code& l, const Code& d) {
         w.literal(l, 'a');
         w.symbol(l, 257);
         w.symbol(d, 31);
       },
       literals, distances, false},
      {"too far", InflateError::distanceTooFar,
       [](DeflateWriter& w, const Code& l, const Code& d) {
         w.literal(l, 'a');
         w.match(l, d, 3, 2);
       },
       literals, distances, false},
      {"one literal code", InflateError::none, onlyEnd, Code(one), none, true},
      {"its unused bit", InflateError::literalSymbol, unused, Code(one), none, true},
      {"one distance code", InflateError::none, matched, Code(three), single, true},
      {"its unused bit", InflateError::distanceSymbol, matchedUnused, Code(three), single, true},
      {"no distance code", InflateError::none, onlyEnd, Code(three), none, true},
      {"no distance code used", InflateError::distanceSymbol, matchedUnused, Code(three), none,
       true},
      {"one distance code of two bits", InflateError::distanceCode, onlyEnd, Code(three),
       singleLong, true},
      {"a match first", InflateError::distanceTooFar,
       [](DeflateWriter& w, const Code& l, const Code& d) { w.match(l, d, 3, 1); }, Code(two),
       single, true},
  };
  onEachCpuPath([&] {
    for (const Row& row : rows) {
      DeflateWriter writer;
      writer.blockHead(true, row.dynamic ? 2 : 1);
      if (row.dynamic) writer.codes(row.literals, row.distances);
      row.write(writer, row.literals, row.distances);
      const bool ok = row.error == InflateError::none;
      // Zeros behind let the fast loop take it too.
      for (const std::size_t padding : {0U, 400U}) {
        const Result result = whole(writer.stream() + std::string(padding, '\0'));
        EXPECT_EQ(result.status, ok ? Status::finished : Status::failed) << row.name;
        EXPECT_EQ(result.error, row.error) << row.name;
        EXPECT_EQ(result.output, writer.output()) << row.name << ": what came before is kept";
        EXPECT_TRUE(!ok || result.left == padding) << row.name;
      }
    }
  });
}

TEST(InflateTest, MatchesReachTheWholeWindowAcrossCalls) {
  const Code literals = fixedLiterals();
  const Code distances = fixedDistances();
  DeflateWriter writer;
  writer.blockHead(true, 1);
  std::mt19937 random(1);
  for (int i = 0; i < 32767; ++i) writer.literal(literals, static_cast<char>(random()));
  DeflateWriter tooEarly = writer;
  tooEarly.match(literals, distances, 258, 32768);
  writer.literal(literals, 'z');
  for (unsigned i = 0; i < 500; ++i) writer.match(literals, distances, 258, 32768 - i % 2);
  writer.endOfBlock(literals);
  for (const std::size_t out : {1U, 300U, 1000U, 32767U, 32768U, 32769U, 100000U}) {
    expectSame(inPieces(writer.stream(), 5000, out),
               {Status::finished, InflateError::none, writer.output(), 0}, std::to_string(out));
    const Result refused = inPieces(tooEarly.stream() + std::string(40, '\0'), 50000, out);
    EXPECT_EQ(refused.error, InflateError::distanceTooFar) << out;
    EXPECT_TRUE(refused.output == tooEarly.output()) << out;
  }
}

TEST(InflateTest, AFailureLastsUntilReset) {
  InflateState2 state;
  std::uint8_t room[10];
  std::size_t produced = 0;
  const std::string bad = "\x06";
  const std::string good("\x03\x00", 2);
  ByteSpan in = asBytes(bad);
  EXPECT_EQ(state.run(in, room, produced), Status::failed);
  in = asBytes(good);
  EXPECT_EQ(state.run(in, room, produced), Status::failed);
  EXPECT_EQ(state.errorCode(), InflateError::blockType);
  EXPECT_EQ(in.size(), 2U);
  state.reset();
  EXPECT_EQ(state.run(in, room, produced), Status::finished);
  EXPECT_EQ(state.errorCode(), InflateError::none);
  // Finished is a lasting state too.
  in = asBytes(good);
  EXPECT_EQ(state.run(in, room, produced), Status::finished);
  EXPECT_EQ(in.size(), 2U);
}

TEST(InflateTest, LackOfMemoryKeepsWhatWasProduced) {
  const DeflateWriter writer = mixedStream(7, 3000000);
  InflateState2 state;
  DataBuffer out;
  ByteSpan in = asBytes(writer.stream());
  {
    const storage::ScopedAllocationFault fault(1);
    EXPECT_EQ(state.inflateAll(in, out, 0), Status::failed);
  }
  EXPECT_EQ(state.errorCode(), InflateError::outOfMemory);
  EXPECT_GT(out.getSize(), 0U);
  EXPECT_TRUE(writer.output().starts_with(out.text()));
}

TEST(InflateTest, OutputIsAppendedAndMatchesDoNotReachWhatWasThere) {
  InflateState2 state;
  DataBuffer out;
  out.append(std::string_view("there before"));
  const Code literals = fixedLiterals();
  DeflateWriter writer;
  writer.blockHead(true, 1);
  writer.literal(literals, 'a');
  DeflateWriter bad = writer;
  writer.endOfBlock(literals);
  bad.match(literals, fixedDistances(), 3, 2);
  ByteSpan in = asBytes(writer.stream());
  EXPECT_EQ(state.inflateAll(in, out, 0), Status::finished);
  EXPECT_EQ(out.text(), "there beforea");
  in = asBytes(bad.stream());
  EXPECT_EQ(state.inflateAll(in, out, 0), Status::failed);
  EXPECT_EQ(out.text(), "there beforeaa");
}

TEST(InflateTest, TraceNamesStatesAndRefills) {
  const Code literals = fixedLiterals();
  DeflateWriter writer;
  writer.stored(false, "ab");
  writer.blockHead(false, 1);
  writer.literal(literals, 'a');
  writer.endOfBlock(literals);
  writer.blockHead(true, 2);
  writer.codes(flatCode(286), flatCode(30));
  writer.endOfBlock(flatCode(286));

  RecordedLog log;
  InflateState2 state;
  state.setTrace(&log);
  std::uint8_t room[100];
  std::size_t produced = 0;
  ByteSpan first = asBytes(writer.stream()).first(6);  // inside the stored data
  EXPECT_EQ(state.run(first, room, produced), Status::more);
  ByteSpan second = asBytes(writer.stream()).subspan(6, 2);  // ends inside a symbol
  EXPECT_EQ(state.run(second, room, produced), Status::more);
  ByteSpan rest = asBytes(writer.stream()).subspan(8);
  EXPECT_EQ(state.run(rest, room, produced), Status::finished);
  EXPECT_EQ(log.text(),
            "info: need stored setup\n"
            "info: need stored data\n"
            "info: Refilling source buffer...\n"
            "info: Need block type\n"
            "info: need fixed setup\n"
            "info: need fixed data\n"
            "info: Emergency refill...\n"
            "info: Need block type\n"
            "info: need dynamic setup\n"
            "info: need dynamic data\n"
            "info: Need block type\n"
            "info: Finished because state = -1 and lastBlock bit is set.\n");
}

TEST(InflateTest, TraceOfVeryManyBlocksIsCutShort) {
  const Code literals = fixedLiterals();
  DeflateWriter writer;
  for (int i = 0; i < 20000; ++i) {
    writer.blockHead(i == 19999, 1);
    writer.endOfBlock(literals);
  }
  RecordedLog log;
  InflateState2 state;
  state.setTrace(&log);
  DataBuffer out;
  ByteSpan in = asBytes(writer.stream());
  EXPECT_EQ(state.inflateAll(in, out, 0), Status::finished);
  EXPECT_EQ(std::count(log.text().begin(), log.text().end(), '\n'), 10001);
  EXPECT_TRUE(log.text().ends_with("info: The rest of the trace is left out.\n"));
}

}  // namespace
}  // namespace zantrel::test

// More bytes than 32 bits count, through sources and sinks, in memory that does not grow.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

#include "compress/zantrel_deflate.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_null.h"

namespace zantrel::test {
namespace {

constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 12345;

/// Lines that name their own place, so that a shift or a lost block shows.
void fillLines(std::uint64_t from, std::string& block) {
  constexpr std::size_t kLine = 32;
  for (std::size_t at = 0; at < block.size(); at += kLine) {
    std::string line = std::to_string((from + at) / kLine);
    line.insert(0, kLine - 1 - line.size(), '.');
    block.replace(at, kLine, line + '\n');
  }
}

class Lines final : public DataSource {
 public:
  bool nextBlock(std::size_t wanted, ByteSpan& block, LogBase&) override {
    constexpr std::size_t kBlock = 65536;
    if (used_ == text_.size()) {
      text_.resize(kBlock);
      fillLines(static_cast<std::uint64_t>(position_), text_);
      used_ = 0;
    }
    const std::uint64_t left = kSize - static_cast<std::uint64_t>(position_);
    const std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>({wanted, left, text_.size() - used_}));
    block = asBytes(text_).subspan(used_, count);
    used_ += count;
    position_ += static_cast<std::int64_t>(count);
    return true;
  }
  std::int64_t size() const override { return static_cast<std::int64_t>(kSize); }

 private:
  std::string text_;
  std::size_t used_ = 0;
};

/// Compares what is written with the lines.
class LinesAgain final : public DataSink {
 public:
  bool same() const { return same_; }

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override {
    while (!bytes.empty() && same_) {
      ByteSpan expected;
      lines_.nextBlock(bytes.size(), expected, log);
      same_ = !expected.empty() && std::equal(expected.begin(), expected.end(), bytes.begin());
      bytes = bytes.subspan(expected.size());
    }
    return same_;
  }

 private:
  Lines lines_;
  bool same_ = true;
};

/// Inflates what is written, as it comes.
class Inflating final : public DataSink {
 public:
  LinesAgain& lines() { return lines_; }
  ZantrelDeflate& engine() { return engine_; }

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override {
    out_.clear();
    const bool done = size() == 0 ? engine_.beginDecompress(bytes, out_, log)
                                  : engine_.moreDecompress(bytes, out_, log);
    return done && lines_.write(out_.bytes(), log);
  }

 private:
  ZantrelDeflate engine_;
  DataBuffer out_;
  LinesAgain lines_;
};

/// What this process holds in memory now, in KiB; 0 where the system does not tell.
long memoryKib() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
  }
  return 0;
}

TEST(LargeDeflateTest, MoreThanFourGigabytesGoThroughInConstantMemory) {
  const long before = memoryKib();
  LogNull log;
  Lines lines;
  Inflating sink;
  ZantrelDeflate engine;
  engine.setLevel(1);
  ASSERT_TRUE(engine.compressSource(lines, sink, log, nullptr));
  DataBuffer rest;
  EXPECT_TRUE(sink.engine().endDecompress(rest, log, nullptr));
  EXPECT_TRUE(sink.lines().same());
  EXPECT_EQ(static_cast<std::uint64_t>(sink.lines().size()), kSize);
#if !defined(__SANITIZE_ADDRESS__)
  if (before > 0) {
    EXPECT_LT(memoryKib() - before, 8 * 1024);
  }
#endif
}

}  // namespace
}  // namespace zantrel::test

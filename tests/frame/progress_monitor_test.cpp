#include "frame/progress_monitor.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <thread>

#include "platform/clock.h"

namespace zantrel {
namespace {

class FakeClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override { return now; }
  SystemTime utcTime() const override { return {}; }
  SystemTime localTime() const override { return {}; }
  int utcOffsetMinutes() const override { return 0; }

  std::uint32_t now = 10'000;
};

/// Writes down what it hears: "50 " for a percentage, "? " for an abort check.
class Recorder final : public ProgressEvent {
 public:
  void PercentDone(std::uint32_t percent, bool& abort) override {
    heard += std::to_string(percent) + " ";
    abort = answer;
  }
  void AbortCheck(bool& abort) override {
    heard += "? ";
    abort = answer;
  }
  void ProgressInfo(const char* name, const char* value) override {
    heard += std::string(name) + "=" + value + " ";
  }

  std::string heard;
  bool answer = false;
};

class ProgressMonitorTest : public ::testing::Test {
 protected:
  FakeClock clock;
  ScopedClock scope{clock};
  Recorder sink;
  bool abort = false;
};

TEST_F(ProgressMonitorTest, PercentageFollowsItsArithmetic) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::int64_t done, total;
    std::uint32_t percent;
  } kRows[] = {
      {5, 0, 100},
      {0, 0, 100},
      {7, -1, 100},
      {1, 3, 33},
      {0, 3, 0},
      {3, 3, 100},
      {999'999, 3'000'000, 33},     // as 99,999 of 300,000
      {999'999, 1'000'000, 99},     // at the bound nothing is cut
      {1'000'000, 1'000'001, 100},  // deliberately coarse beyond it
      {kMost / 2, kMost, 49},
      {kMost, kMost, 100},
      {5, 3, 166},
      {-5, 3, 0},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(ProgressMonitor::percent(row.done, row.total), row.percent)
        << row.done << " of " << row.total;
}

TEST_F(ProgressMonitorTest, ReportsEachRiseOnceAndNeverMoreThan100) {
  ProgressMonitor monitor(&sink, 200);
  for (const std::int64_t n : {1, 1, 98, 0, 50, 500, 500}) monitor.consume(n, abort);
  monitor.end();
  EXPECT_EQ(sink.heard, "1 50 75 100 ");
  EXPECT_EQ(monitor.consumed(), 200);
}

TEST_F(ProgressMonitorTest, TakesATotalInTwoHalves) {
  const ProgressMonitor monitor(&sink, 5u, 2u);
  EXPECT_EQ(monitor.total(), (std::int64_t{2} << 32) + 5);
  EXPECT_EQ(ProgressMonitor().total(), 100);
}

TEST_F(ProgressMonitorTest, EndConsumesWhatRemains) {
  ProgressMonitor monitor(&sink, 1000);
  monitor.consume(500, abort);
  monitor.end();
  monitor.end();
  EXPECT_EQ(sink.heard, "50 100 ");
}

TEST_F(ProgressMonitorTest, AHeld100ComesFromEndExactlyOnce) {
  for (const std::int64_t total : {1000, 0}) {
    sink.heard.clear();
    ProgressMonitor monitor(&sink, total);
    monitor.setHoldFinal100(true);
    clock.now += 1000;
    monitor.setPercent(total, abort);  // a held 100 does not become a heartbeat either
    EXPECT_EQ(sink.heard, total != 0 ? "" : "? ") << total;
    sink.heard.clear();
    monitor.end();
    monitor.end();
    EXPECT_EQ(sink.heard, "100 ") << total;
  }
}

TEST_F(ProgressMonitorTest, SetPercentBackwardsMovesTheCountNotTheReport) {
  ProgressMonitor monitor(&sink, 100);
  monitor.setPercent(60, abort);
  monitor.setPercent(20, abort);
  EXPECT_EQ(monitor.consumed(), 20);
  EXPECT_EQ(monitor.lastPercent(), 60u);
  monitor.setPercent(60, abort);
  monitor.setPercent(61, abort);
  monitor.setPercent(1000, abort);
  EXPECT_EQ(sink.heard, "60 61 100 ");
}

TEST_F(ProgressMonitorTest, AsksAbortOnlyWhileThePercentageStandsStill) {
  ProgressMonitor monitor(&sink, 1000);
  const struct {
    std::uint32_t wait;
    std::int64_t n;
    const char* heard;
  } kSteps[] = {
      {300, 1, ""},     // exactly the interval is not more than it
      {1, 1, "? "},     // 301 ms since the last callback
      {300, 1, ""},     // the clock restarted
      {400, 10, "1 "},  // a rise comes instead of the heartbeat
      {300, 1, ""},    {1, 0, "? "},
  };
  for (const auto& step : kSteps) {
    sink.heard.clear();
    clock.now += step.wait;
    monitor.consume(step.n, abort);
    EXPECT_EQ(sink.heard, step.heard) << step.wait << " ms, " << step.n;
  }
}

TEST_F(ProgressMonitorTest, HeartbeatsCanBePacedAndSuppressed) {
  ProgressMonitor monitor(&sink, 1000);
  monitor.setHeartbeatMs(50);
  clock.now += 51;
  monitor.consume(0, abort);
  EXPECT_EQ(sink.heard, "? ");
  monitor.setSuppressHeartbeat(true);
  clock.now += 5000;
  monitor.consume(0, abort);
  EXPECT_EQ(sink.heard, "? ");
}

TEST_F(ProgressMonitorTest, AnAbortStaysWhateverIsAnsweredLater) {
  ProgressMonitor monitor(&sink, 100);
  sink.answer = true;
  monitor.consume(10, abort);
  EXPECT_TRUE(abort);
  sink.answer = false;
  monitor.consume(10, abort);
  EXPECT_FALSE(abort) << "the answer of this callback";
  EXPECT_TRUE(monitor.aborted());
  monitor.reset(50);
  EXPECT_TRUE(monitor.aborted());
  const std::string heard = sink.heard;
  clock.now += 10'000;
  EXPECT_TRUE(monitor.abortCheck(10));
  EXPECT_EQ(sink.heard, heard) << "nobody is asked again";
}

TEST_F(ProgressMonitorTest, AbortCheckWaitsForItsHeartbeat) {
  ProgressMonitor monitor(&sink, 100);
  EXPECT_FALSE(monitor.abortCheck(100));  // the heartbeat tick starts at 0, long ago
  EXPECT_EQ(sink.heard, "? ");
  clock.now += 99;
  EXPECT_FALSE(monitor.abortCheck(100));
  EXPECT_EQ(sink.heard, "? ");
  clock.now += 1;
  EXPECT_FALSE(monitor.abortCheck(100));
  EXPECT_EQ(sink.heard, "? ? ");
  clock.now = 5;  // the tick count wraps: the heartbeat starts anew
  EXPECT_FALSE(monitor.abortCheck(100));
  EXPECT_EQ(sink.heard, "? ? ");
  clock.now = 105;
  sink.answer = true;
  EXPECT_TRUE(monitor.abortCheck(100));
  EXPECT_TRUE(monitor.aborted());
}

TEST_F(ProgressMonitorTest, AbortCheckWithoutHeartbeatUsesTheDefaultPace) {
  ProgressMonitor monitor(&sink, 100);
  clock.now += 300;
  monitor.abortCheck(0);
  EXPECT_EQ(sink.heard, "");
  clock.now += 1;
  monitor.abortCheck(0);
  EXPECT_EQ(sink.heard, "? ");
  clock.now += 300;
  monitor.abortCheck(0);
  monitor.consume(0, abort);  // both clocks were stamped
  EXPECT_EQ(sink.heard, "? ");
}

TEST_F(ProgressMonitorTest, TheDefaultPaceSurvivesTheWrapOfTheTickCount) {
  clock.now = 0xFFFFFF00u;
  ProgressMonitor monitor(&sink, 100);
  clock.now = 0x10;
  monitor.consume(0, abort);
  EXPECT_EQ(sink.heard, "");
  clock.now = 0x100;
  monitor.consume(0, abort);
  EXPECT_EQ(sink.heard, "? ");
}

TEST_F(ProgressMonitorTest, DisabledItDoesNothing) {
  ProgressMonitor monitor(&sink, 100);
  monitor.setDisabled(true);
  monitor.setHoldFinal100(true);
  abort = true;
  clock.now += 10'000;
  monitor.consume(50, abort);
  monitor.setPercent(70, abort);
  monitor.progressInfo("n", 1);
  EXPECT_FALSE(monitor.abortCheck(1));
  monitor.end();
  EXPECT_EQ(sink.heard, "");
  EXPECT_EQ(monitor.consumed(), 0);
  EXPECT_TRUE(abort) << "left as it was";
}

TEST_F(ProgressMonitorTest, WithoutASinkItKeepsThePercentageItself) {
  ProgressMonitor monitor(nullptr, 100);
  monitor.consume(40, abort);
  EXPECT_EQ(monitor.ownSink().percentDone(), 40u);
  monitor.ownSink().requestAbort();
  monitor.consume(10, abort);
  EXPECT_TRUE(abort && monitor.aborted());
}

TEST_F(ProgressMonitorTest, PassesNamedNumbersOn) {
  ProgressMonitor monitor(&sink, 100);
  monitor.progressInfo("small", -7);
  monitor.progressInfo64("large", std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(sink.heard, "small=-7 large=-9223372036854775808 ");
}

TEST_F(ProgressMonitorTest, ResetStartsOver) {
  ProgressMonitor monitor(&sink, 100);
  monitor.consume(100, abort);
  monitor.reset(10);
  monitor.consume(5, abort);
  EXPECT_EQ(sink.heard, "100 50 ");
}

TEST(AsyncProgressEventTest, AnotherThreadsRequestIsAnsweredAtEveryCallback) {
  AsyncProgressEvent event;
  bool abort = true;
  event.PercentDone(12, abort);
  EXPECT_FALSE(abort);
  EXPECT_EQ(event.percentDone(), 12u);
  std::thread caller([&] { event.requestAbort(); });
  while (!abort) event.AbortCheck(abort);
  caller.join();
  for (const auto callback :
       {&AsyncProgressEvent::PercentDone, &AsyncProgressEvent::PercentDone2}) {
    abort = false;
    (event.*callback)(50, abort);
    EXPECT_TRUE(abort);
  }
  EXPECT_EQ(event.percentDone(), 50u);
}

TEST(ProgressEventTest, ItsOwnOperationsDoNothing) {
  ProgressEvent event;
  bool abort = false;
  EventValues values;
  event.PercentDone(50, abort);
  event.AbortCheck(abort);
  event.PercentDone2(50, abort);
  event.ProgressInfo("name", "value");
  event.ComponentEvent4(values, abort);
  event.ComponentEvent34(values, abort);
  EXPECT_FALSE(abort);
}

}  // namespace
}  // namespace zantrel

#include "facade/event_bridge.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <vector>

#include "facade/fake_component.h"

namespace zantrel::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using Zantrel::Bytes;

/// Consumes 100 units one by one; stops when told to.
bool hundredSteps(MethodCall& c, const DataBuffer&, DataBuffer&, ProgressEvent*) {
  ProgressMonitor& monitor = c.startProgress(100);
  for (int i = 0; i < 100; ++i) {
    monitor.consume(1);
    if (monitor.aborted()) return false;
  }
  monitor.progressInfo("steps", 100);
  return true;
}

class EventBridgeTest : public testing::Test {
 protected:
  EventBridgeTest() {
    object_.native().work = hundredSteps;
    object_.OnPercentDone = [this](Zantrel::PercentDoneEventArgs& args) {
      percents_.push_back(args.PercentDone);
      args.Abort = args.PercentDone == abortAt_;
    };
    object_.OnProgressInfo = [this](Zantrel::ProgressInfoEventArgs& args) {
      facts_ += args.Name + "=" + args.Value;
    };
  }
  bool work() { return object_.Work({}, out_); }

  FakePublic object_;
  Bytes out_;
  std::vector<unsigned> percents_;
  unsigned abortAt_ = 1000;
  std::string facts_;
};

TEST_F(EventBridgeTest, ProgressReachesTheHandlers) {
  EXPECT_TRUE(work());
  ASSERT_EQ(percents_.size(), 100u);
  EXPECT_EQ(percents_.front(), 1u);
  EXPECT_EQ(percents_.back(), 100u);
  EXPECT_EQ(facts_, "steps=100");
}

TEST_F(EventBridgeTest, AbortFromAHandlerStopsTheMethod) {
  abortAt_ = 30;
  EXPECT_FALSE(work());
  EXPECT_EQ(percents_.back(), 30u);
}

TEST_F(EventBridgeTest, TheAnswerToAnAbortCheckReachesTheComponent) {
  bool answer = false;
  bool seen = true;
  object_.native().work = [&](MethodCall&, const DataBuffer&, DataBuffer&, ProgressEvent* sink) {
    sink->AbortCheck(seen = false);
    return !seen;
  };
  object_.OnAbortCheck = [&](Zantrel::AbortCheckEventArgs& args) { args.Abort = answer; };
  EXPECT_TRUE(work());
  answer = true;
  EXPECT_FALSE(work());
  EXPECT_TRUE(seen);
}

TEST_F(EventBridgeTest, NothingIsRaisedWhileEventsAreDisabled) {
  facade::put_EnableEvents(object_.impl_, false);
  EXPECT_TRUE(work());
  EXPECT_TRUE(percents_.empty());
  facade::put_EnableEvents(object_.impl_, true);
  EXPECT_TRUE(work());
  EXPECT_FALSE(percents_.empty());
}

TEST_F(EventBridgeTest, AHandlerMayDisableEventsInTheMiddle) {
  object_.OnPercentDone = [this](Zantrel::PercentDoneEventArgs& args) {
    percents_.push_back(args.PercentDone);
    if (args.PercentDone == 5) facade::put_EnableEvents(object_.impl_, false);
  };
  EXPECT_TRUE(work());
  EXPECT_EQ(percents_.back(), 5u);
}

TEST_F(EventBridgeTest, AnExceptionFromAHandlerFailsTheMethodAndIsFoundInTheExceptionLog) {
  object_.OnPercentDone = [this](Zantrel::PercentDoneEventArgs& args) {
    percents_.push_back(args.PercentDone);
    if (args.PercentDone == 3) throw std::runtime_error("handler gave up");
  };
  EXPECT_FALSE(work());
  EXPECT_EQ(percents_.back(), 3u);
  EXPECT_EQ(facts_, "");
  EXPECT_THAT(object_.log(), HasSubstr("Internal exception"));
  EXPECT_THAT(object_.log(), HasSubstr("exceptionLog: handler gave up"));
  object_.OnPercentDone = nullptr;
  EXPECT_TRUE(work());
  EXPECT_THAT(object_.log(), Not(HasSubstr("handler gave up")));
}

TEST_F(EventBridgeTest, AnExceptionFromAHandlerFailsAlsoAMethodThatDoesNotHeedTheAbort) {
  object_.native().work = [](MethodCall&, const DataBuffer&, DataBuffer& out, ProgressEvent* sink) {
    bool abort = false;
    sink->PercentDone(50, abort);
    EXPECT_TRUE(abort);
    return out.append("finished all the same");
  };
  object_.OnPercentDone = [](Zantrel::PercentDoneEventArgs&) { throw 1; };
  EXPECT_FALSE(work());
  EXPECT_TRUE(out_.empty());
}

TEST_F(EventBridgeTest, ACallFromInsideAHandlerAddsToTheRunningLog) {
  std::string echoed;
  object_.OnPercentDone = [&](Zantrel::PercentDoneEventArgs& args) {
    if (args.PercentDone == 50) {
      EXPECT_TRUE(object_.Echo("from inside", echoed));
    }
  };
  EXPECT_TRUE(work());
  EXPECT_EQ(echoed, "from inside");
  EXPECT_THAT(object_.log(), HasSubstr("  Work:\r\n"));
  EXPECT_THAT(object_.log(), HasSubstr("\r\n    Echo:\r\n"));
}

TEST_F(EventBridgeTest, WithoutHandlersTheComponentGetsNoSink) {
  object_.OnPercentDone = nullptr;
  object_.OnProgressInfo = nullptr;
  const void* sink = this;
  object_.native().work = [&](MethodCall&, const DataBuffer&, DataBuffer&, ProgressEvent* given) {
    sink = given;
    return true;
  };
  EXPECT_TRUE(work());
  EXPECT_EQ(sink, nullptr);
}

}  // namespace
}  // namespace zantrel::test

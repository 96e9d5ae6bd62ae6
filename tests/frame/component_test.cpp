#include "frame/component.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/string_buffer.h"
#include "frame/host_environment.h"
#include "frame/live_objects.h"
#include "platform/system_info.h"

namespace zantrel {
namespace {

std::string logOf(ClsBase& component) {
  StringBuffer text;
  component.log().getText(text);
  return std::string(text.view());
}

std::string dllDate(const std::string& indent) {
  return indent + "DllDate: " + buildDate() + "\r\n";
}

class Probe : public Component {
 public:
  bool Succeed(bool result) {
    return call("Succeed", [&](MethodCall& c) {
      c.log().logInfo("body");
      return result;
    });
  }
  bool LeaveOpenOnThrow() {
    return call("LeaveOpenOnThrow", [&](MethodCall& c) -> bool {
      const LogContext inner(c.log(), "inner");
      throw std::runtime_error("lost");
    });
  }
  std::int32_t Count(std::int32_t result, bool decided) {
    return call("Count", [&](MethodCall& c) {
      if (decided) c.setSuccess(true);
      return result;
    });
  }
  std::unique_ptr<int> Make(bool made) {
    return call("Make", [&](MethodCall&) { return made ? std::make_unique<int>(1) : nullptr; });
  }
  bool Long(ProgressEvent* sink) {
    return call("Long", sink, [&](MethodCall& c) {
      ProgressMonitor& progress = c.startProgress(2);
      progress.consume(1);
      return !progress.aborted();
    });
  }
  bool Listed() {
    return call("SaveLastError", [](MethodCall&) { return false; });
  }
  bool Refusing() {
    if (refusesInBrowser("Refusing")) return false;
    return call("Refusing", [](MethodCall&) { return true; });
  }
  void environment() { logEnvironment(); }
};

TEST(CallFrameTest, LogsTheMethodItsDateAndItsResult) {
  Probe probe;
  EXPECT_FALSE(probe.get_LastMethodSuccess());
  EXPECT_TRUE(probe.Succeed(true));
  EXPECT_EQ(logOf(probe),
            "ZantrelLog:\r\n  Succeed:\r\n" + dllDate("    ") + "    body\r\n    Success.\r\n");
  EXPECT_TRUE(probe.get_LastMethodSuccess());
  EXPECT_FALSE(probe.Succeed(false));
  EXPECT_EQ(logOf(probe),
            "ZantrelLog:\r\n  Succeed:\r\n" + dllDate("    ") + "    body\r\n    Failed.\r\n");
  EXPECT_FALSE(probe.get_LastMethodSuccess());
}

TEST(CallFrameTest, SuccessAndFailureAreInfoAndError) {
  Probe probe;
  StringBuffer xml;
  probe.Succeed(true);
  probe.log().getXml(xml);
  EXPECT_TRUE(xml.containsSubstring("<info>Success.</info>"));
  probe.Succeed(false);
  probe.log().getXml(xml);
  EXPECT_TRUE(xml.containsSubstring("<error>Failed.</error>"));
}

TEST(CallFrameTest, ZeroAndNullAreFailuresUnlessTheBodyDecides) {
  Probe probe;
  EXPECT_EQ(probe.Count(7, false), 7);
  EXPECT_TRUE(probe.get_LastMethodSuccess());
  EXPECT_EQ(probe.Count(0, false), 0);
  EXPECT_FALSE(probe.get_LastMethodSuccess());
  EXPECT_EQ(probe.Count(0, true), 0);
  EXPECT_TRUE(probe.get_LastMethodSuccess());
  EXPECT_EQ(probe.Make(false), nullptr);
  EXPECT_FALSE(probe.get_LastMethodSuccess());
  EXPECT_NE(probe.Make(true), nullptr);
  EXPECT_TRUE(probe.get_LastMethodSuccess());
}

TEST(CallFrameTest, ListedMembersLeaveLogAndSuccessAlone) {
  Probe probe;
  probe.Succeed(true);
  const std::string before = logOf(probe);
  EXPECT_FALSE(probe.Listed());
  EXPECT_EQ(logOf(probe), before);
  EXPECT_TRUE(probe.get_LastMethodSuccess());
}

class CallingBack final : public ProgressEvent {
 public:
  explicit CallingBack(Probe& probe) : probe_(probe) {}
  void PercentDone(std::uint32_t percent, bool&) override {
    if (percent == 50) probe_.Succeed(true);
  }

 private:
  Probe& probe_;
};

TEST(CallFrameTest, ACallFromAnEventHandlerNestsInTheRunningLog) {
  Probe probe;
  CallingBack sink(probe);
  EXPECT_TRUE(probe.Long(&sink));
  EXPECT_EQ(logOf(probe), "ZantrelLog:\r\n  Long:\r\n" + dllDate("    ") + "    Succeed:\r\n" +
                              dllDate("      ") +
                              "      body\r\n      Success.\r\n    Success.\r\n");
  EXPECT_TRUE(probe.Succeed(true));
  EXPECT_EQ(logOf(probe),
            "ZantrelLog:\r\n  Succeed:\r\n" + dllDate("    ") + "    body\r\n    Success.\r\n");
}

class Aborting final : public ProgressEvent {
 public:
  explicit Aborting(std::uint32_t at) : at_(at) {}
  void PercentDone(std::uint32_t percent, bool& abort) override {
    last = percent;
    abort = percent == at_;
  }

  std::uint32_t last = 0;

 private:
  std::uint32_t at_;
};

TEST(CallFrameTest, TheSinksAbortReachesTheBody) {
  Probe probe;
  Aborting sink(50);
  EXPECT_FALSE(probe.Long(&sink));
  EXPECT_EQ(sink.last, 50u);
  EXPECT_TRUE(probe.Long(nullptr));
}

TEST(CallFrameTest, ASuccessfulMethodIsDoneToTheLastPercent) {
  Probe probe;
  Aborting sink(100);
  EXPECT_TRUE(probe.Long(&sink)) << "too late to stop it";
  EXPECT_EQ(sink.last, 100u);
}

TEST(CallFrameTest, AnExceptionClosesTheCallAndTheNextStartsAfresh) {
  Probe probe;
  probe.Succeed(true);
  EXPECT_THROW(probe.LeaveOpenOnThrow(), std::runtime_error);
  EXPECT_FALSE(probe.get_LastMethodSuccess());
  EXPECT_TRUE(probe.Succeed(true));
  EXPECT_EQ(logOf(probe),
            "ZantrelLog:\r\n  Succeed:\r\n" + dllDate("    ") + "    body\r\n    Success.\r\n");
}

TEST(ExceptionLogTest, TellsOfTheExceptionAndOfWhatIsAlive) {
  resetLiveObjectCounts();
  Probe probe;
  probe.Succeed(true);
  {
    const CountedObject<LiveObject::Socket> socket;
    const CountedObject<LiveObject::Cert> first;
    const CountedObject<LiveObject::Cert> second = first;
    probe.reportException("Send", "std::bad_alloc");
  }
  EXPECT_EQ(logOf(probe), "ZantrelLog:\r\n  Send:\r\n" + dllDate("    ") +
                              "    Internal exception\r\n    ExceptionUpdate: 1004\r\n"
                              "    SocketGCP: 1\r\n    CertGCP: 2\r\n"
                              "    exceptionLog: std::bad_alloc\r\n");
  EXPECT_FALSE(probe.get_LastMethodSuccess());
  EXPECT_EQ(liveObjectCount(LiveObject::Cert), 0);
}

TEST(ExceptionLogTest, IsShownEvenWhenEmptyAndGathersWhatFollows) {
  Probe probe;
  probe.CreateExceptionLog("Send");
  EXPECT_TRUE(logOf(probe).ends_with("    exceptionLog: \r\n"));
  probe.appendException("first");
  probe.reportException("Send", "second");
  EXPECT_TRUE(logOf(probe).ends_with("    exceptionLog: first\nsecond\r\n"));
}

TEST(ExceptionLogTest, StaysBounded) {
  Probe probe;
  for (int i = 0; i < 1000; ++i) probe.appendException(std::string(1000, 'x'));
  probe.reportException("Send", std::string(1'000'000, 'y'));
  EXPECT_LT(logOf(probe).size(), 20'000u);
}

TEST(LiveObjectsTest, EveryKindHasItsTagAndResetClearsAll) {
  EXPECT_STREQ(liveObjectTag(LiveObject::ClsZip), "ClsZipGcp");
  EXPECT_STREQ(liveObjectTag(LiveObject::Pop3), "Pop3GCP");
  EXPECT_STREQ(liveObjectTag(LiveObject::UL1), "UL1GCP");
  liveObjectCount(LiveObject::Http) = 3;
  resetLiveObjectCounts();
  for (std::size_t i = 0; i < kLiveObjectKinds; ++i)
    EXPECT_EQ(liveObjectCount(static_cast<LiveObject>(i)), 0);
}

TEST(ClsBaseTest, ADestroyedObjectIsRefused) {
  alignas(Probe) static unsigned char place[sizeof(Probe)];
  auto* probe = new (place) Probe;
  EXPECT_TRUE(ClsBase::isValid(probe));
  EXPECT_FALSE(ClsBase::isValid(nullptr));
  EXPECT_FALSE(probe->reservedQuery1() || probe->reservedQuery2());
  ClsBase* volatile handle = probe;
  probe->~Probe();
  EXPECT_FALSE(ClsBase::isValid(handle));
}

TEST(HostEnvironmentTest, TheLogNamesUserAndFacade) {
  const struct {
    FacadeKind kind;
    const char* name;
  } kRows[] = {{FacadeKind::ActiveX, "ActiveX"},
               {FacadeKind::DotNet1, ".NET 1.*"},
               {FacadeKind::DotNet2, ".NET 2.0"},
               {FacadeKind::DotNet2X64, ".NET 2.0 / x64"},
               {static_cast<FacadeKind>(9), "Visual C++ 8.0"},
               {FacadeKind::Native, "Visual C++ 8.0"}};
  for (const auto& row : kRows) {
    Probe probe;
    setFacadeKind(row.kind);
    probe.environment();
    EXPECT_EQ(logOf(probe),
              "ZantrelLog:\r\n  Username: " + userName() + "\r\n  Component: " + row.name + "\r\n");
  }
}

TEST(HostEnvironmentTest, MethodsMayRefuseToRunInABrowser) {
  Probe probe;
  EXPECT_TRUE(probe.Refusing());
  setHostedInBrowser(true);
  EXPECT_FALSE(probe.Refusing());
  setHostedInBrowser(false);
  EXPECT_EQ(logOf(probe),
            "ZantrelLog:\r\n  Refusing:\r\n" + dllDate("    ") +
                "    This method is not allowed to run in a browser for security purposes.\r\n");
  EXPECT_FALSE(probe.get_LastMethodSuccess());
}

class LockedProbe final : public Probe, public ZantrelCritSec {
 public:
  ZantrelCritSec* criticalSection() noexcept override { return this; }
  bool Add() {
    return call("Add", [&](MethodCall&) {
      ++sum;
      return true;
    });
  }
  int sum = 0;
};

TEST(ZantrelCritSecTest, HoldsWholeMethodsAgainstOtherThreads) {
  LockedProbe probe;
  constexpr int kThreads = 4;
  constexpr int kCalls = 300;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < kCalls; ++i) probe.Add();
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(probe.sum, kThreads * kCalls);
  EXPECT_EQ(logOf(probe), "ZantrelLog:\r\n  Add:\r\n" + dllDate("    ") + "    Success.\r\n");
}

TEST(ZantrelCritSecTest, ItsDestructionWaitsForAThreadInside) {
  auto section = std::make_unique<ZantrelCritSec>();
  bool left = false;
  std::atomic<bool> inside{false};
  std::thread holder([&, raw = section.get()] {
    const CritSecLock outer(*raw);
    const CritSecLock again(*raw);
    inside = true;
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    left = true;
  });
  while (!inside) std::this_thread::yield();
  section.reset();
  EXPECT_TRUE(left);
  holder.join();
}

}  // namespace
}  // namespace zantrel

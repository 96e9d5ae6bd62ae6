// Clock, locks, random bytes and what the system says about itself.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/ansi_code_page.h"
#include "platform/clock.h"
#include "platform/cpu_features.h"
#include "platform/error_text.h"
#include "platform/mutex.h"
#include "platform/random.h"
#include "platform/secure_wipe.h"
#include "platform/system_info.h"

namespace zantrel {
namespace {

class FixedClock final : public Clock {
 public:
  std::uint32_t tickCountMs() const override { return 42; }
  SystemTime utcTime() const override { return {2008, 6, 2, 3, 18, 5, 30, 0}; }
  SystemTime localTime() const override { return {2008, 6, 2, 3, 11, 5, 30, 0}; }
  int utcOffsetMinutes() const override { return -420; }
};

TEST(ClockTest, AScopedClockStandsInForTheMachines) {
  {
    const FixedClock fixed;
    const ScopedClock scope(fixed);
    EXPECT_EQ(tickCountMs(), 42u);
    EXPECT_EQ(systemClock().utcTime().year, 2008);
    EXPECT_EQ(systemClock().utcOffsetMinutes(), -420);
  }
  EXPECT_EQ(&systemClock(), &machineClock());
}

TEST(ClockTest, LocalTimeIsUtcPlusTheOffset) {
  // Taken twice until no minute began in between.
  for (;;) {
    const SystemTime utc = systemClock().utcTime();
    const SystemTime local = systemClock().localTime();
    const int offset = systemClock().utcOffsetMinutes();
    if (systemClock().utcTime().minute != utc.minute) continue;
    const int utcMinutes = utc.hour * 60 + utc.minute;
    const int localMinutes = local.hour * 60 + local.minute;
    EXPECT_EQ((utcMinutes + offset + 2 * 1440) % 1440, localMinutes);
    EXPECT_GE(utc.year, 2020);
    EXPECT_TRUE(utc.month >= 1 && utc.month <= 12 && utc.dayOfWeek <= 6);
    break;
  }
}

TEST(ClockTest, TicksDoNotGoBackwards) {
  const std::uint32_t before = tickCountMs();
  EXPECT_LT(tickCountMs() - before, 60'000u);
}

TEST(RecursiveMutexTest, ItsOwnerMayTakeItAgainAndOthersWait) {
  RecursiveMutex mutex;
  mutex.lock();
  mutex.lock();
  EXPECT_TRUE(mutex.try_lock());
  mutex.unlock();
  mutex.unlock();
  bool taken = true;
  std::thread([&] { taken = mutex.try_lock(); }).join();
  EXPECT_FALSE(taken);
  mutex.unlock();
  std::thread([&] {
    taken = mutex.try_lock();
    mutex.unlock();
  }).join();
  EXPECT_TRUE(taken);
}

TEST(RandomTest, FillsTheWholeBufferWithDifferentBytes) {
  std::vector<unsigned char> buffer(100'000, 0);
  randomBytes(buffer.data(), buffer.size());
  const std::set<unsigned char> values(buffer.end() - 10'000, buffer.end());
  EXPECT_EQ(values.size(), 256u);
  std::array<unsigned char, 16> first{};
  std::array<unsigned char, 16> second{};
  randomBytes(first.data(), first.size());
  randomBytes(second.data(), second.size());
  EXPECT_NE(first, second);
  randomBytes(nullptr, 0);
}

TEST(SecureWipeTest, ClearsExactlyTheGivenBytes) {
  char secret[] = "xpasswordx";
  secureWipe(secret + 1, 8);
  EXPECT_EQ(std::string(secret, 10), std::string("x\0\0\0\0\0\0\0\0x", 10));
  secureWipe(nullptr, 0);
}

TEST(SecureWipeTest, SurvivesTheOptimiserBeforeMemoryGoes) {
  // The place of a dead local object is looked at through a pointer that outlives it.
  alignas(8) static unsigned char place[32];
  struct Secret {
    unsigned char bytes[32];
    ~Secret() { secureWipe(bytes, sizeof bytes); }
  };
  auto* secret = new (place) Secret;
  std::memset(secret->bytes, 0x5A, sizeof secret->bytes);
  secret->~Secret();
  for (std::size_t i = 0; i < sizeof place; ++i)
    EXPECT_EQ(static_cast<volatile unsigned char*>(place)[i], 0) << i;
}

TEST(SystemInfoTest, EveryErrorNumberHasAText) {
  for (const std::uint32_t number : {1u, 2u, 5u, 999'999u, 0xFFFFFFFFu}) {
    const std::string text = systemErrorText(number);
    EXPECT_FALSE(text.empty()) << number;
    EXPECT_NE(text.back(), '\n') << number;
  }
  EXPECT_NE(systemErrorText(2), systemErrorText(5));
}

TEST(SystemInfoTest, TheUserHasAName) {
  EXPECT_FALSE(userName().empty());
}

TEST(AnsiCodePageTest, ACallReplacesTheDefaultAndZeroBringsItBack) {
  const int machine = defaultAnsiCodePage();
  setAnsiCodePage(1251);
  EXPECT_EQ(ansiCodePage(), 1251);
  setAnsiCodePage(0);
  EXPECT_EQ(ansiCodePage(), machine);
}

TEST(CpuFeaturesTest, AScopeReplacesThemAndEndsWithIt) {
  const CpuFeatures before = cpuFeatures();
  {
    const ScopedCpuFeatures none{CpuFeatures{}};
    EXPECT_FALSE(cpuFeatures().ssse3 || cpuFeatures().avx2 || cpuFeatures().avx512);
  }
  EXPECT_EQ(cpuFeatures().ssse3, before.ssse3);
  EXPECT_EQ(cpuFeatures().avx512, before.avx512);
}

#ifdef ZT_X86_64
TEST(CpuFeaturesTest, AgreeWithTheCompilersOwnDetection) {
  const CpuFeatures found = detectCpuFeatures();
  EXPECT_EQ(found.ssse3, __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1"));
  EXPECT_EQ(found.avx2, __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2"));
  EXPECT_EQ(found.pclmul, __builtin_cpu_supports("pclmul") != 0);
  EXPECT_EQ(found.avx512,
            __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"));
}
#endif

}  // namespace
}  // namespace zantrel

#include "platform/cpu_features.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#ifdef ZT_X86_64
#include <cpuid.h>
#endif

namespace zantrel {

namespace {

#ifdef ZT_X86_64

struct Registers {
  unsigned a = 0, b = 0, c = 0, d = 0;
};

Registers cpuid(unsigned leaf) {
  Registers r;
  if (!__get_cpuid_count(leaf, 0, &r.a, &r.b, &r.c, &r.d)) return {};
  return r;
}

// Which register sets the operating system saves on a task switch (XCR0).
std::uint64_t savedStates() {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (std::uint64_t{high} << 32) | low;
}

constexpr bool has(unsigned reg, unsigned bit) {
  return ((reg >> bit) & 1U) != 0;
}

#endif

// ZANTREL_CPU takes away what is above the named level.
CpuFeatures limited(CpuFeatures features, const char* level) {
  if (level == nullptr) return features;
  if (std::strcmp(level, "portable") == 0) return {};
  const bool ssse3 = std::strcmp(level, "ssse3") == 0;
  const bool avx2 = std::strcmp(level, "avx2") == 0;
  if (ssse3) features.avx2 = false;
  if (ssse3 || avx2) features.avx512 = features.vpclmul = features.vaes = false;
  return features;
}

CpuFeatures& inForce() noexcept {
  static CpuFeatures features = limited(detectCpuFeatures(), std::getenv("ZANTREL_CPU"));
  return features;
}

}  // namespace

CpuFeatures detectCpuFeatures() noexcept {
  CpuFeatures f;
#ifdef ZT_X86_64
  const Registers one = cpuid(1);
  const Registers seven = cpuid(7);
  const Registers extended = cpuid(0x80000001);
  const std::uint64_t saved = has(one.c, 27) ? savedStates() : 0;
  const bool ymm = (saved & 0x06) == 0x06;
  const bool zmm = (saved & 0xE6) == 0xE6;
  f.ssse3 = has(one.c, 9) && has(one.c, 19);
  f.pclmul = has(one.c, 1);
  f.aesNi = has(one.c, 25);
  f.shaNi = has(seven.b, 29) && f.ssse3;
  const bool bitOperations = has(seven.b, 3) && has(seven.b, 8) && has(one.c, 23) &&
                             has(extended.c, 5);  // BMI1, BMI2, POPCNT, LZCNT
  f.avx2 = ymm && has(one.c, 28) && has(seven.b, 5) && bitOperations;
  f.avx512 = f.avx2 && zmm && has(seven.b, 16) && has(seven.b, 17) && has(seven.b, 30) &&
             has(seven.b, 31) && has(seven.c, 1) && has(seven.c, 6);
  f.vaes = f.avx2 && has(seven.c, 9);
  f.vpclmul = f.avx2 && has(seven.c, 10);
#endif
  return f;
}

const CpuFeatures& cpuFeatures() noexcept {
  return inForce();
}

ScopedCpuFeatures::ScopedCpuFeatures(const CpuFeatures& features) noexcept : previous_(inForce()) {
  inForce() = features;
}

ScopedCpuFeatures::~ScopedCpuFeatures() {
  inForce() = previous_;
}

}  // namespace zantrel

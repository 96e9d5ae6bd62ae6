#pragma once
// What the processor offers, asked once. Engines with a fast path choose by it in one place.

namespace zantrel {

struct CpuFeatures {
  bool ssse3 = false;   ///< with SSE4.1
  bool avx2 = false;    ///< with BMI1 and BMI2
  bool avx512 = false;  ///< F, BW, DQ, VL, VBMI and VBMI2
  bool pclmul = false;
  bool vpclmul = false;
  bool aesNi = false;
  bool vaes = false;
  bool shaNi = false;
};

/// The features in force. The environment variable ZANTREL_CPU limits them: "portable" (none),
/// "ssse3", "avx2"; anything else, or its absence, allows all that the processor has.
const CpuFeatures& cpuFeatures() noexcept;

/// What the processor has, whatever the environment variable says.
CpuFeatures detectCpuFeatures() noexcept;

/// Replaces the features in force for its lifetime, so that tests run every path.
class ScopedCpuFeatures {
 public:
  explicit ScopedCpuFeatures(const CpuFeatures& features) noexcept;
  ~ScopedCpuFeatures();
  ScopedCpuFeatures(const ScopedCpuFeatures&) = delete;
  ScopedCpuFeatures& operator=(const ScopedCpuFeatures&) = delete;

 private:
  CpuFeatures previous_;
};

// Fast paths carry their instruction set on each function, not as flags of a whole file: code that
// the compiler shares between files (templates, inline functions) then stays portable.
#if defined(__x86_64__)
#define ZT_X86_64 1
#define ZT_TARGET_SSSE3 __attribute__((target("ssse3,sse4.1")))
#define ZT_TARGET_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt,lzcnt")))
#define ZT_TARGET_AVX512                                                      \
  __attribute__((                                                             \
      target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,bmi," \
             "bmi2,popcnt,lzcnt")))
#endif

}  // namespace zantrel

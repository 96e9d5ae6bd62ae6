// The loop of inflate with BMI2's shifts and masks, which need no fixed register, and wide copies.

#include "compress/inflate_fast.h"
#include "platform/cpu_features.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

namespace zantrel::inflate {

FastStop fastAvx2(const FastJob& job) noexcept;

namespace {

struct Bmi2Bits {
  ZT_TARGET_AVX2 static std::uint64_t low(std::uint64_t bits, unsigned n) noexcept {
    return _bzhi_u64(bits, n);
  }
};

}  // namespace

[[gnu::aligned(64)]] ZT_TARGET_AVX2 FastStop fastAvx2(const FastJob& job) noexcept {
  return job.paired ? fastLoop<Bmi2Bits, true>(job) : fastLoop<Bmi2Bits, false>(job);
}

}  // namespace zantrel::inflate

#endif

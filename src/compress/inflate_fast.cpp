#include "compress/inflate_fast.h"

#include "platform/cpu_features.h"

namespace zantrel::inflate {

#if defined(ZT_X86_64)
FastStop fastAvx2(const FastJob& job) noexcept;
#endif

namespace {

struct PortableBits {
  static std::uint64_t low(std::uint64_t bits, unsigned n) noexcept { return lowBits(bits, n); }
};

}  // namespace

FastStop fast(const FastJob& job) noexcept {
#if defined(ZT_X86_64)
  if (cpuFeatures().avx2) return fastAvx2(job);
#endif
  return job.paired ? fastLoop<PortableBits, true>(job) : fastLoop<PortableBits, false>(job);
}

}  // namespace zantrel::inflate

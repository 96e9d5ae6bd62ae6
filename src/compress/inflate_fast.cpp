#include "compress/inflate_fast.h"

#include "platform/cpu_features.h"

namespace zantrel::inflate {

#if defined(ZT_X86_64)
FastStop fastAvx2(const FastJob& job) noexcept;
#endif

FastStop fast(const FastJob& job) noexcept {
#if defined(ZT_X86_64)
  if (cpuFeatures().avx2) return fastAvx2(job);
#endif
  return fastLoop(job);
}

}  // namespace zantrel::inflate

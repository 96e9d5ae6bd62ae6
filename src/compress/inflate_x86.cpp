// The loop of inflate with BMI2's shifts and masks, which need no fixed register, and wide copies.

#include "compress/inflate_fast.h"
#include "platform/cpu_features.h"

#if defined(ZT_X86_64)

namespace zantrel::inflate {

FastStop fastAvx2(const FastJob& job) noexcept;

ZT_TARGET_AVX2 FastStop fastAvx2(const FastJob& job) noexcept {
  return fastLoop(job);
}

}  // namespace zantrel::inflate

#endif

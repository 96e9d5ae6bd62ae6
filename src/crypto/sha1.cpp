// SHA-1 (FIPS 180-4, section 6.1). The processor's SHA instructions do the work where it has them
// (sha_x86.cpp); elsewhere the steps of sha1_rounds.h.

#include "crypto/sha1.h"

#include "crypto/sha1_rounds.h"
#include "crypto/sha_kernels.h"

namespace zantrel {

void Sha1State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.shaNi) return sha::sha1ShaNi(words_.data(), blocks, count);
  if (cpu.avx2) return sha::sha1Avx2(words_.data(), blocks, count);
#endif
  sha::sha1Blocks(words_.data(), blocks, count);
}

}  // namespace zantrel

// SHA-1 (FIPS 180-4, section 6.1). The processor's SHA instructions do the work where it has them
// (sha_x86.cpp); elsewhere the steps of sha1_rounds.h.

#include "crypto/sha1.h"

#include "crypto/sha1_rounds.h"
#include "crypto/sha_kernels.h"

namespace zantrel {

void Sha1State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  compress(blocks, count, nullptr, 0);
}

void Sha1State::compress(const std::uint8_t* blocks, std::size_t count, const std::uint8_t* last,
                         std::size_t lastCount) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.shaNi) return sha::sha1ShaNi(words_.data(), blocks, count, last, lastCount);
  if (cpu.avx2) {
    sha::sha1Avx2(words_.data(), blocks, count);
    return sha::sha1Avx2(words_.data(), last, lastCount);
  }
#endif
  sha::sha1Blocks(words_.data(), blocks, count);
  sha::sha1Blocks(words_.data(), last, lastCount);
}

}  // namespace zantrel

#include "compress/adler32.h"

#include <algorithm>

#include "compress/adler32_kernels.h"

namespace zantrel {

namespace adler {

namespace {

// All of `bytes` that are a multiple of Step; the rest is left.
template <auto Kernel, std::size_t Step>
void addAll(Sums& sums, ByteSpan& bytes) noexcept {
  while (bytes.size() >= Step) {
    std::size_t count = std::min(bytes.size(), kMostAtOnce);
    count -= count % Step;
    Kernel(sums, bytes.data(), count);
    sums.bytes %= kModulus;
    sums.sums %= kModulus;
    bytes = bytes.subspan(count);
  }
}

}  // namespace

void portable(Sums& sums, const std::uint8_t* bytes, std::size_t count) noexcept {
  Sums now = sums;
  for (; count >= 8; count -= 8, bytes += 8) {
    // Two chains of additions that do not wait for each other.
    std::uint32_t sum = 0;
    std::uint32_t weighted = 0;
    for (std::uint32_t i = 0; i < 8; ++i) {
      sum += bytes[i];
      weighted += (8 - i) * bytes[i];
    }
    now.sums += 8 * now.bytes + weighted;
    now.bytes += sum;
  }
  for (; count > 0; --count, ++bytes) {
    now.bytes += *bytes;
    now.sums += now.bytes;
  }
  sums = now;
}

}  // namespace adler

std::uint32_t Adler32::extend(std::uint32_t adler, ByteSpan bytes) noexcept {
  adler::Sums sums{adler & 0xFFFF, adler >> 16};
#if defined(ZT_X86_64)
  if (cpuFeatures().avx512) {
    adler::addAll<adler::avx512, adler::kStep>(sums, bytes);
  } else if (cpuFeatures().avx2) {
    adler::addAll<adler::avx2, adler::kStep>(sums, bytes);
  }
#endif
  adler::addAll<adler::portable, 1>(sums, bytes);
  return sums.sums << 16 | sums.bytes;
}

}  // namespace zantrel

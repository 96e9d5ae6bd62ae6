// AES (FIPS 197): the key expansion of section 5.2 and the choice of the implementation.
//
// The expansion is the same for every path. Its SubWord goes through the bit-sliced S-box: a table
// would tell the key to whoever watches the cache.

#include "crypto/aes.h"

#include <bit>
#include <cstring>

#include "core/byte_order.h"
#include "platform/cpu_features.h"
#include "platform/secure_wipe.h"

namespace zantrel {

namespace {

const aes::Kernels& bestKernels() noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.aesNi && cpu.vaes && cpu.avx512) return aes::kVaes512;
  if (cpu.aesNi) return aes::kAesNi;
#endif
  return aes::kBitSliced;
}

void expandKey(ByteSpan key, aes::Schedule& keys) noexcept {
  constexpr auto little = std::endian::little;
  std::uint8_t* const bytes = keys.encrypt[0];
  const std::size_t keyWords = key.size() / 4;
  keys.rounds = keyWords + 6;
  std::memcpy(bytes, key.data(), key.size());
  std::uint32_t roundConstant = 1;
  for (std::size_t i = keyWords; i < 4 * (keys.rounds + 1); ++i) {
    auto word = loadWord<std::uint32_t, little>(bytes + 4 * (i - 1));
    if (i % keyWords == 0) {
      word = aes::substituteWord(std::rotr(word, 8)) ^ roundConstant;
      roundConstant = (roundConstant << 1) ^ ((roundConstant >> 7) * 0x11BU);
    } else if (keyWords == 8 && i % 8 == 4) {
      word = aes::substituteWord(word);
    }
    storeWord<little>(word ^ loadWord<std::uint32_t, little>(bytes + 4 * (i - keyWords)),
                      bytes + 4 * i);
  }
}

}  // namespace

Aes::Aes() noexcept : kernels_(&bestKernels()) {}

Aes::~Aes() {
  secureWipe(&keys_, sizeof keys_);
}

void Aes::setKey(ByteSpan key) noexcept {
  kernels_ = &bestKernels();
  expandKey(key, keys_);
  kernels_->prepare(keys_);
}

}  // namespace zantrel

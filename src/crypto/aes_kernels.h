#pragma once
// The implementations of AES, chosen in aes.cpp only.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::aes {

inline constexpr std::size_t kBlockSize = 16;
inline constexpr std::size_t kMaxRounds = 14;

/// Round keys in the forms that the implementations need. Only those of the one in use are set.
struct Schedule {
  std::size_t rounds = 0;
  /// As FIPS 197 numbers them.
  alignas(64) std::uint8_t encrypt[kMaxRounds + 1][kBlockSize];
  /// Of the equivalent inverse cipher (FIPS 197, section 5.3.5), in the order of their use.
  alignas(64) std::uint8_t decrypt[kMaxRounds + 1][kBlockSize];
  /// Bit-sliced: eight planes of a state that holds the round key four times.
  std::uint64_t planes[kMaxRounds + 1][8];
};

/// One implementation. Chains and overlap as in BlockModes.
struct Kernels {
  /// From `encrypt` and `rounds`.
  void (*prepare)(Schedule& keys);
  void (*ecbEncrypt)(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                     std::size_t blocks);
  void (*ecbDecrypt)(const Schedule& keys, const std::uint8_t* in, std::uint8_t* out,
                     std::size_t blocks);
  void (*cbcEncrypt)(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                     std::uint8_t* out, std::size_t blocks);
  void (*cbcDecrypt)(const Schedule& keys, std::uint8_t* chain, const std::uint8_t* in,
                     std::uint8_t* out, std::size_t blocks);
};

extern const Kernels kBitSliced;
#if defined(ZT_X86_64)
extern const Kernels kAesNi;
extern const Kernels kVaes512;
#endif

/// SubBytes on the four bytes of a word, in constant time.
std::uint32_t substituteWord(std::uint32_t word) noexcept;

}  // namespace zantrel::aes

#pragma once
// Block functions of the SHA family for single instruction sets; sha1.cpp and sha2.cpp choose among
// them. Each absorbs `count` blocks into a state of 5 or 8 words.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::sha {

/// Round constants (FIPS 180-4, sections 4.2.2 and 4.2.3).
extern const std::uint32_t kRound256[64];
extern const std::uint64_t kRound512[80];

#if defined(ZT_X86_64)
#define ZT_TARGET_SHA __attribute__((target("sha,sse4.1,ssse3")))

// These go on with `lastCount` blocks at `last`, so that a short message and its padding need the
// state brought into order once only.
void sha1ShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count,
               const std::uint8_t* last, std::size_t lastCount) noexcept;
void sha256ShaNi(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count,
                 const std::uint8_t* last, std::size_t lastCount) noexcept;
void sha1Avx2(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count) noexcept;
void sha256Avx2(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count) noexcept;
void sha512Avx2(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count) noexcept;
void sha512Avx512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count) noexcept;
#endif

}  // namespace zantrel::sha

#pragma once

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"

namespace zantrel {

struct SipKey {
  std::uint64_t k0;
  std::uint64_t k1;
};

/// SipHash-2-4 (Aumasson and Bernstein, "SipHash: a fast short-input PRF", 2012): a hash that
/// nobody without the key can find collisions for.
std::uint64_t sipHash(const SipKey& key, ByteSpan bytes) noexcept;

/// A key of this process, made of random bytes when it is first asked for.
const SipKey& processSipKey();

}  // namespace zantrel

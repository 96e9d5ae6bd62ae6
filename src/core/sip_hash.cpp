#include "core/sip_hash.h"

#include <bit>

#include "platform/random.h"

namespace zantrel {
namespace {

struct State {
  std::uint64_t v0, v1, v2, v3;

  void round() noexcept {
    v0 += v1;
    v2 += v3;
    v1 = std::rotl(v1, 13) ^ v0;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 = std::rotl(v0, 32);
    v2 += v1;
    v0 += v3;
    v1 = std::rotl(v1, 17) ^ v2;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 = std::rotl(v2, 32);
  }
  void take(std::uint64_t word) noexcept {
    v3 ^= word;
    round();
    round();
    v0 ^= word;
  }
};

/// Up to eight bytes, the first one lowest.
std::uint64_t loadLittleEndian(ByteSpan bytes) noexcept {
  std::uint64_t word = 0;
  for (std::size_t i = bytes.size(); i > 0; --i) word = word << 8 | bytes[i - 1];
  return word;
}

}  // namespace

std::uint64_t sipHash(const SipKey& key, ByteSpan bytes) noexcept {
  State s{key.k0 ^ 0x736F6D6570736575U, key.k1 ^ 0x646F72616E646F6DU, key.k0 ^ 0x6C7967656E657261U,
          key.k1 ^ 0x7465646279746573U};
  const std::uint64_t length = bytes.size();
  for (; bytes.size() >= 8; bytes = bytes.subspan(8)) s.take(loadLittleEndian(bytes.first(8)));
  s.take(length << 56 | loadLittleEndian(bytes));
  s.v2 ^= 0xFF;
  for (int i = 0; i < 4; ++i) s.round();
  return s.v0 ^ s.v1 ^ s.v2 ^ s.v3;
}

const SipKey& processSipKey() {
  static const SipKey key = [] {
    SipKey random;
    randomBytes(&random, sizeof random);
    return random;
  }();
  return key;
}

}  // namespace zantrel

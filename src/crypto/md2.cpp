// MD2 (RFC 1319): the one digest of the family that works on bytes and ends with a checksum of the
// message instead of its length. Each of its 864 table look-ups a block needs the one before, which
// bounds every implementation; the checksum runs beside them.

#include "crypto/md2.h"

#include <cstring>

#include "platform/secure_wipe.h"

namespace zantrel {
namespace {

// RFC 1319, section 3.2: a permutation drawn from the digits of pi. In 32 bits, so that no byte
// must be widened on the way from one look-up to the next.
constexpr std::uint32_t kPi[256] = {
    41,  46,  67,  201, 162, 216, 124, 1,   61,  54,  84,  161, 236, 240, 6,   19,  98,  167, 5,
    243, 192, 199, 115, 140, 152, 147, 43,  217, 188, 76,  130, 202, 30,  155, 87,  60,  253, 212,
    224, 22,  103, 66,  111, 24,  138, 23,  229, 18,  190, 78,  196, 214, 218, 158, 222, 73,  160,
    251, 245, 142, 187, 47,  238, 122, 169, 104, 121, 145, 21,  178, 7,   63,  148, 194, 16,  137,
    11,  34,  95,  33,  128, 127, 93,  154, 90,  144, 50,  39,  53,  62,  204, 231, 191, 247, 151,
    3,   255, 25,  48,  179, 72,  165, 181, 209, 215, 94,  146, 42,  172, 86,  170, 198, 79,  184,
    56,  210, 150, 164, 125, 182, 118, 252, 107, 226, 156, 116, 4,   241, 69,  157, 112, 89,  100,
    113, 135, 32,  134, 91,  207, 101, 230, 45,  168, 2,   27,  96,  37,  173, 174, 176, 185, 246,
    28,  70,  97,  105, 52,  64,  126, 15,  85,  71,  163, 35,  221, 81,  175, 58,  195, 92,  249,
    206, 186, 197, 234, 38,  44,  83,  13,  110, 133, 40,  132, 9,   211, 223, 205, 244, 65,  129,
    77,  82,  106, 220, 55,  200, 108, 193, 171, 250, 36,  225, 123, 8,   12,  189, 177, 74,  120,
    136, 149, 139, 227, 99,  232, 109, 233, 203, 213, 254, 59,  0,   29,  57,  242, 239, 183, 14,
    102, 88,  208, 228, 166, 119, 114, 248, 235, 117, 75,  10,  49,  68,  80,  180, 143, 237, 31,
    26,  219, 153, 141, 51,  159, 17,  131, 20};

}  // namespace

void Md2State::start() noexcept {
  chain_.fill(0);
  checksum_.fill(0);
}

void Md2State::mix(const std::uint8_t* block) noexcept {
  std::uint8_t x[48];
  std::memcpy(x, chain_.data(), 16);
  std::memcpy(x + 16, block, 16);
  for (std::size_t i = 0; i < 16; ++i) x[32 + i] = static_cast<std::uint8_t>(x[i] ^ x[16 + i]);
  std::uint32_t t = 0;
  for (std::uint32_t round = 0; round < 18; ++round) {
    for (std::uint8_t& byte : x) {
      t = byte ^ kPi[t];
      byte = static_cast<std::uint8_t>(t);
    }
    t = (t + round) & 0xFF;
  }
  std::memcpy(chain_.data(), x, 16);
}

void Md2State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  for (; count > 0; --count, blocks += kBlockBytes) {
    mix(blocks);
    std::uint8_t last = checksum_[15];
    for (std::size_t i = 0; i < 16; ++i) {
      checksum_[i] = static_cast<std::uint8_t>(checksum_[i] ^ kPi[blocks[i] ^ last]);
      last = checksum_[i];
    }
  }
}

void Md2State::finish(ByteSpan rest, std::uint64_t, std::uint8_t* out) {
  const std::size_t blocks = rest.size() / kBlockBytes;
  const std::size_t used = rest.size() % kBlockBytes;
  std::uint8_t last[kBlockBytes];
  std::memset(last, static_cast<int>(kBlockBytes - used), sizeof last);
  if (used > 0) std::memcpy(last, rest.data() + blocks * kBlockBytes, used);
  compress(rest.data(), blocks);
  compress(last, 1);
  secureWipe(last, sizeof last);
  mix(checksum_.data());
  std::memcpy(out, chain_.data(), kMaxDigestBytes);
}

}  // namespace zantrel

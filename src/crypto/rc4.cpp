// RC4, as published in 1994 and described in RFC 6229. One byte of key stream costs three loads and
// two stores, and the processor cannot know whether a load is of what was just stored: it would
// wait for every store before it. So the entries of the next two steps are loaded ahead and
// compared with what is stored meanwhile, which leaves a chain of registers. Eight bytes of key
// stream are gathered for one addition to the text.

#include "crypto/rc4.h"

#include <cstring>
#include <utility>

#include "core/byte_order.h"
#include "platform/secure_wipe.h"

namespace zantrel {

Rc4::~Rc4() {
  secureWipe(state_.data(), sizeof state_);
}

void Rc4::setKey(ByteSpan key) noexcept {
  i_ = j_ = 0;
  for (std::uint32_t n = 0; n < 256; ++n) state_[n] = n;
  for (std::size_t n = 0, j = 0; n < 256; ++n) {
    j = (j + state_[n] + key[n % key.size()]) & 0xFF;
    std::swap(state_[n], state_[j]);
  }
}

void Rc4::apply(const std::uint8_t* in, std::uint8_t* out, std::size_t size) noexcept {
  std::uint32_t i = i_;
  std::uint32_t j = j_;
  std::uint32_t* const s = state_.data();
  std::uint32_t x = s[(i + 1) & 0xFF];
  std::uint32_t following = s[(i + 2) & 0xFF];
  const auto next = [&]() noexcept {
    i = (i + 1) & 0xFF;
    j = (j + x) & 0xFF;
    const std::uint32_t first = (i + 1) & 0xFF, second = (i + 2) & 0xFF;
    const std::uint32_t loaded = s[second];
    const std::uint32_t y = s[j];
    s[j] = x;
    s[i] = y;
    const std::uint32_t sum = (x + y) & 0xFF;
    const std::uint32_t stored = x;
    x = j == first ? stored : following;
    following = j == second ? stored : loaded;
    return s[sum];
  };
  for (; size >= 8; size -= 8, in += 8, out += 8) {
    std::uint64_t stream = 0;
    for (int shift = 0; shift < 64; shift += 8) stream |= std::uint64_t{next()} << shift;
    storeWord<std::endian::little>(loadWord<std::uint64_t, std::endian::little>(in) ^ stream, out);
  }
  for (; size > 0; --size) *out++ = static_cast<std::uint8_t>(*in++ ^ next());
  i_ = i;
  j_ = j;
}

}  // namespace zantrel

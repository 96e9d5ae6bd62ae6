// MD5 (RFC 1321).
//
// Four rounds of sixteen steps, each a chain of dependent operations: what bounds the speed is the
// way of the newest word b through a step. x + constant is added before b comes in, and G is the
// sum of two terms that share no bit, of which one does not depend on b: so rounds 2 and 3 take
// four operations in a row where the text of the standard takes five or six.

#include "crypto/md5.h"

#include <bit>

namespace zantrel {
namespace {

using Word = std::uint32_t;

// RFC 1321, section 3.4: floor(2^32 * |sin(i + 1)|).
constexpr Word kSine[64] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};
constexpr int kShift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
// The message word of step i in a round is kFirst + i * kStride, modulo 16.
constexpr int kFirst[4] = {0, 1, 5, 0};
constexpr int kStride[4] = {1, 5, 3, 7};

template <int Step>
[[gnu::always_inline]] inline void step(Word (&v)[4], const std::uint8_t* block) {
  constexpr int kRound = Step / 16;
  constexpr int kIndex = (kFirst[kRound] + kStride[kRound] * (Step & 15)) & 15;
  Word& a = v[(64 - Step) & 3];
  const Word b = v[(65 - Step) & 3];
  const Word c = v[(66 - Step) & 3];
  const Word d = v[(67 - Step) & 3];
  a += loadWord<Word, std::endian::little>(block + 4 * kIndex) + kSine[Step];
  if constexpr (kRound == 0) {
    a += ((c ^ d) & b) ^ d;
  } else if constexpr (kRound == 1) {
    a += c & ~d;
    a += b & d;
  } else if constexpr (kRound == 2) {
    a += (c ^ d) ^ b;
  } else {
    a += (b | ~d) ^ c;
  }
  a = std::rotl(a, kShift[kRound][Step & 3]) + b;
}

template <int Step = 0>
[[gnu::always_inline]] inline void steps(Word (&v)[4], const std::uint8_t* block) {
  step<Step>(v, block);
  if constexpr (Step < 63) steps<Step + 1>(v, block);
}

}  // namespace

void Md5State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  Word v[4] = {words_[0], words_[1], words_[2], words_[3]};
  for (; count > 0; --count, blocks += kBlockBytes) {
    const Word before[4] = {v[0], v[1], v[2], v[3]};
    steps(v, blocks);
    for (int i = 0; i < 4; ++i) v[i] += before[i];
  }
  for (std::size_t i = 0; i < 4; ++i) words_[i] = v[i];
}

}  // namespace zantrel

// CRC-32 by carry-less multiplication: bytes that lie `distance` bits before others are multiplied
// by x^distance modulo the generator and added to them, many at once; what remains at the end is
// reduced. All polynomials are reflected, their highest power in the lowest bit, which makes every
// product one power too high; the constants make up for it.

#include "compress/zip_crc_kernels.h"

#if defined(ZT_X86_64)

#include "platform/x86_intrinsics.h"

#define ZT_TARGET_PCLMUL __attribute__((target("pclmul,ssse3,sse4.1")))
#define ZT_TARGET_VPCLMUL512 \
  __attribute__((target("vpclmulqdq,pclmul,avx512f,avx512bw,avx512dq,avx512vl,bmi,bmi2")))
#define ZT_PCLMUL_INLINE [[gnu::always_inline]] ZT_TARGET_PCLMUL inline
#define ZT_VPCLMUL_INLINE [[gnu::always_inline]] ZT_TARGET_VPCLMUL512 inline

namespace zantrel::crc32 {

namespace {

// x^power modulo the generator, times x for the reflection.
constexpr std::uint64_t powerOfX(unsigned power) {
  std::uint32_t value = 0x80000000;  // 1
  for (; power > 0; --power) value = (value >> 1) ^ ((value & 1) != 0 ? kReflectedPolynomial : 0);
  return std::uint64_t{value} << 1;
}

// The two multipliers that carry a register over a distance in bits: its low half holds the higher
// powers.
struct Fold {
  std::uint64_t low;
  std::uint64_t high;
};
constexpr Fold over(unsigned distance) {
  return {powerOfX(distance + 32), powerOfX(distance - 32)};
}

// x^64 divided by the generator, reflected.
constexpr std::uint64_t inverse() {
  std::uint64_t quotient = 0;
  std::uint32_t rest = 0;  // of x^64, 33 bits at a time, the highest power in bit 0
  for (int step = 0; step <= 64; ++step) {
    const bool out = (rest & 1) != 0;
    rest >>= 1;
    if (step == 0) rest |= 0x80000000;
    if (out) rest ^= kReflectedPolynomial;
    if (step >= 32) quotient |= std::uint64_t{out} << (step - 32);
  }
  return quotient;
}

constexpr std::uint64_t kGenerator = std::uint64_t{kReflectedPolynomial} << 1 | 1;

ZT_PCLMUL_INLINE __m128i load(const std::uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

ZT_PCLMUL_INLINE __m128i pair(std::uint64_t low, std::uint64_t high) {
  return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

ZT_PCLMUL_INLINE __m128i constants(Fold fold) {
  return pair(fold.low, fold.high);
}

ZT_PCLMUL_INLINE __m128i fold(__m128i x, __m128i by, __m128i onto) {
  const __m128i product =
      _mm_xor_si128(_mm_clmulepi64_si128(x, by, 0x00), _mm_clmulepi64_si128(x, by, 0x11));
  return _mm_xor_si128(product, onto);
}

// The register of 128 bits modulo the generator.
ZT_PCLMUL_INLINE std::uint32_t reduce(__m128i x) {
  const __m128i low32 = pair(0xFFFFFFFF, 0);
  // 128 bits to 96, to 64, and to 32 by a multiplication with the inverse.
  x = _mm_xor_si128(_mm_srli_si128(x, 8), _mm_clmulepi64_si128(x, pair(0, powerOfX(96)), 0x10));
  x = _mm_xor_si128(_mm_srli_si128(x, 4),
                    _mm_clmulepi64_si128(_mm_and_si128(x, low32), pair(powerOfX(64), 0), 0x00));
  __m128i quotient =
      _mm_clmulepi64_si128(_mm_and_si128(x, low32), pair(inverse(), kGenerator), 0x00);
  quotient =
      _mm_clmulepi64_si128(_mm_and_si128(quotient, low32), pair(inverse(), kGenerator), 0x10);
  return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(x, quotient), 1));
}

// Bytes i to i + 15 of this, as a shuffle, move a register by 16 - i bytes to the lower end.
alignas(16) constexpr std::uint8_t kMove[48] = {
    0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
    0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15,
    0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};

// Goes on with x, which holds everything before `bytes`; 16 bytes or more lie before their end.
ZT_PCLMUL_INLINE std::uint32_t finish(__m128i x, const std::uint8_t* bytes, std::size_t count) {
  const __m128i by128 = constants(over(128));
  for (; count >= 16; count -= 16, bytes += 16) x = fold(x, by128, load(bytes));
  if (count > 0) {
    // The first bytes of the register go before a full last one made of its others and the tail.
    const __m128i before = _mm_shuffle_epi8(x, load(kMove + count));
    const __m128i others = _mm_shuffle_epi8(x, load(kMove + 16 + count));
    const __m128i isTail = load(kMove + count);  // bit 7 is set where `others` stand
    const __m128i last = _mm_blendv_epi8(load(bytes + count - 16), others, isTail);
    x = fold(before, by128, last);
  }
  return reduce(x);
}

ZT_VPCLMUL_INLINE __m512i load512(const std::uint8_t* p) {
  return _mm512_loadu_si512(p);
}

ZT_VPCLMUL_INLINE __m512i fold512(__m512i x, __m512i by, __m512i onto) {
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(x, by, 0x00),
                                   _mm512_clmulepi64_epi128(x, by, 0x11), onto, 0x96);
}

ZT_VPCLMUL_INLINE __m512i constants512(Fold fold) {
  return _mm512_broadcast_i32x4(constants(fold));
}

}  // namespace

ZT_TARGET_PCLMUL std::uint32_t pclmul(std::uint32_t crc, const std::uint8_t* bytes,
                                      std::size_t count) noexcept {
  __m128i x = _mm_xor_si128(load(bytes), _mm_cvtsi32_si128(static_cast<int>(crc)));
  bytes += 16;
  count -= 16;
  if (count < 64 - 16) return finish(x, bytes, count);

  const __m128i by512 = constants(over(512));
  const __m128i by128 = constants(over(128));
  __m128i x1 = load(bytes);
  __m128i x2 = load(bytes + 16);
  __m128i x3 = load(bytes + 32);
  bytes += 48;
  count -= 48;
  for (; count >= 64; count -= 64, bytes += 64) {
    x = fold(x, by512, load(bytes));
    x1 = fold(x1, by512, load(bytes + 16));
    x2 = fold(x2, by512, load(bytes + 32));
    x3 = fold(x3, by512, load(bytes + 48));
  }
  return finish(fold(fold(fold(x, by128, x1), by128, x2), by128, x3), bytes, count);
}

ZT_TARGET_VPCLMUL512 std::uint32_t vpclmul512(std::uint32_t crc, const std::uint8_t* bytes,
                                              std::size_t count) noexcept {
  const __m128i start = _mm_cvtsi32_si128(static_cast<int>(crc));
  if (count < 64) return finish(_mm_xor_si128(load(bytes), start), bytes + 16, count - 16);

  const __m512i by512 = constants512(over(512));
  __m512i x = _mm512_xor_si512(load512(bytes), _mm512_zextsi128_si512(start));
  bytes += 64;
  count -= 64;
  if (count >= 256 - 64) {
    const __m512i by2048 = constants512(over(2048));
    __m512i x1 = load512(bytes);
    __m512i x2 = load512(bytes + 64);
    __m512i x3 = load512(bytes + 128);
    bytes += 192;
    count -= 192;
    for (; count >= 256; count -= 256, bytes += 256) {
      x = fold512(x, by2048, load512(bytes));
      x1 = fold512(x1, by2048, load512(bytes + 64));
      x2 = fold512(x2, by2048, load512(bytes + 128));
      x3 = fold512(x3, by2048, load512(bytes + 192));
    }
    x = fold512(fold512(fold512(x, by512, x1), by512, x2), by512, x3);
  }
  for (; count >= 64; count -= 64, bytes += 64) x = fold512(x, by512, load512(bytes));

  // The first three quarters onto the last.
  constexpr Fold a = over(384);
  constexpr Fold b = over(256);
  constexpr Fold c = over(128);
  const __m512i quarters =
      _mm512_set_epi64(0, 0, static_cast<long long>(c.high), static_cast<long long>(c.low),
                       static_cast<long long>(b.high), static_cast<long long>(b.low),
                       static_cast<long long>(a.high), static_cast<long long>(a.low));
  const __m512i last = _mm512_maskz_mov_epi64(0xC0, x);
  const __m512i sum = fold512(x, quarters, last);
  const __m256i half =
      _mm256_xor_si256(_mm512_castsi512_si256(sum), _mm512_extracti64x4_epi64(sum, 1));
  const __m128i one =
      _mm_xor_si128(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1));
  return finish(one, bytes, count);
}

}  // namespace zantrel::crc32

#endif

// Quoted-printable decoding on vectors. The bulk decoder classes 64 bytes at a time from three
// loads, each one byte further, computes the value of every escape in place, and lets one compress
// instruction drop digits and soft breaks: the cost does not depend on how many there are.

#include "core/encode/quoted_printable_kernels.h"

#if defined(ZT_X86_64)

#include "core/avx512_x86.h"

namespace zantrel::quoted_printable {

ZT_TARGET_AVX2 std::size_t copyRunAvx2(const char* in, std::size_t size,
                                       std::uint8_t* out) noexcept {
  std::size_t i = 0;
  for (; size - i >= 32; i += 32) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), text);
    const __m256i ends =
        _mm256_or_si256(_mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('=')),
                                        _mm256_cmpeq_epi8(text, _mm256_set1_epi8('\n'))),
                        _mm256_cmpeq_epi8(text, _mm256_setzero_si256()));
    const auto mask = static_cast<unsigned>(_mm256_movemask_epi8(ends));
    if (mask != 0) return i + _tzcnt_u32(mask);
  }
  for (; i < size && in[i] != '=' && in[i] != '\n' && in[i] != '\0'; ++i)
    out[i] = static_cast<std::uint8_t>(in[i]);
  return i;
}

ZT_TARGET_AVX512 std::size_t copyRunAvx512(const char* in, std::size_t size,
                                           std::uint8_t* out) noexcept {
  for (std::size_t i = 0; i < size; i += 64) {
    const __m512i text = avx512::loadSome(in + i, size - i);
    _mm512_storeu_si512(out + i, text);
    // What lies behind the input reads as zero and so ends the run as well.
    const __mmask64 ends = _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('=')) |
                           _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('\n')) |
                           _mm512_testn_epi8_mask(text, text);
    if (ends != 0) return i + static_cast<std::size_t>(_tzcnt_u64(ends));
  }
  return size;
}

namespace {

ZT_TARGET_AVX512 inline __mmask64 equal(__m512i text, char c) noexcept {
  return _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8(c));
}

using avx512::between;

ZT_TARGET_AVX512 inline __mmask64 hexDigits(__m512i text) noexcept {
  return between(text, '0', '9') | between(_mm512_or_si512(text, _mm512_set1_epi8(0x20)), 'a', 'f');
}

// Of characters that are digits; the upper bits of the result are not clear.
ZT_TARGET_AVX512 inline __m512i digitValues(__m512i text) noexcept {
  const __mmask64 letters = _mm512_test_epi8_mask(text, _mm512_set1_epi8(0x40));
  return _mm512_mask_add_epi8(text, letters, text, _mm512_set1_epi8(9));
}

// With fewer escapes and soft breaks in 64 bytes, copying the runs between them is quicker.
constexpr int kWorthBulk = 6;

}  // namespace

ZT_TARGET_AVX512 Progress decodeBulkAvx512(const char* in, std::size_t size, bool afterCr,
                                           std::uint8_t* out) noexcept {
  const __m512i low = _mm512_set1_epi8(15);
  Progress done;
  std::uint64_t carriedCr = afterCr ? 1 : 0;
  while (size - done.consumed >= 66) {
    const char* const p = in + done.consumed;
    const __m512i text = _mm512_loadu_si512(p);
    const __m512i next = _mm512_loadu_si512(p + 1);
    const __m512i second = _mm512_loadu_si512(p + 2);
    const std::uint64_t equals = equal(text, '=');
    const std::uint64_t returns = equal(text, '\r');
    const std::uint64_t lineFeeds = equal(text, '\n');
    const std::uint64_t crlfNext = equal(next, '\r') & equal(second, '\n');
    const std::uint64_t blanks = equal(text, ' ') | equal(text, '\t') | returns;
    const std::uint64_t escapes = equals & hexDigits(next) & hexDigits(second);
    const std::uint64_t softBreaks = equals & crlfNext;
    const std::uint64_t bareLineFeeds = lineFeeds & ~(returns << 1 | carriedCr);
    const std::uint64_t trouble = (equals & ~(escapes | softBreaks)) | bareLineFeeds |
                                  (blanks & crlfNext) | _mm512_testn_epi8_mask(text, text);

    const std::uint64_t inFront = trouble == 0 ? ~std::uint64_t{0} : (trouble & (0 - trouble)) - 1;
    const std::uint64_t triples = escapes | softBreaks;
    const std::uint64_t keep = inFront & ~(triples << 1 | triples << 2 | softBreaks);
    const __m512i high = _mm512_slli_epi16(_mm512_and_si512(digitValues(next), low), 4);
    const __m512i values = _mm512_or_si512(high, _mm512_and_si512(digitValues(second), low));
    const __m512i bytes = _mm512_mask_mov_epi8(text, escapes, values);
    _mm512_storeu_si512(out + done.produced, _mm512_maskz_compress_epi8(keep, bytes));
    done.produced += static_cast<std::size_t>(_mm_popcnt_u64(keep));
    if (trouble != 0) {
      done.consumed += static_cast<std::size_t>(_tzcnt_u64(trouble));
      break;
    }
    // The last two places may begin something that reaches beyond the block.
    const std::size_t beyond = (triples >> 63) * 2 + (triples >> 62 & 1);
    done.consumed += 64 + beyond;
    carriedCr = beyond == 0 ? returns >> 63 : 0;
    if (_mm_popcnt_u64(triples) < kWorthBulk) break;
  }
  return done;
}

}  // namespace zantrel::quoted_printable

#endif

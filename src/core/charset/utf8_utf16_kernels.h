#pragma once
// Vector kernels of utf8_utf16. Each converts valid text from the front, in whole blocks, and stops
// where input or room run short or where something is not valid; the portable loops go on from
// there.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/bytes.h"
#include "platform/cpu_features.h"

namespace zantrel {

struct KernelProgress {
  std::size_t consumed = 0;
  std::size_t produced = 0;
};

/// Takes back a character of UTF-8 of which only the first bytes are behind `done`.
inline KernelProgress withoutHalfCharacter(ByteSpan in, KernelProgress done) noexcept {
  std::size_t back = 1;
  while ((in[done.consumed - back] & 0xC0) == 0x80) ++back;
  done.consumed -= back;
  // A first byte yields one unit at once; of four bytes the third one yields the second.
  done.produced -= in[done.consumed] >= 0xF0 && back > 2 ? 2 : 1;
  return done;
}

#ifdef ZT_X86_64
KernelProgress utf8ToUtf16Avx2(ByteSpan in, std::span<char16_t> out) noexcept;
KernelProgress utf8ToUtf16Avx512(ByteSpan in, std::span<char16_t> out) noexcept;
KernelProgress utf16ToUtf8Avx2(std::span<const char16_t> in, std::span<std::uint8_t> out) noexcept;
KernelProgress utf16ToUtf8Avx512(std::span<const char16_t> in,
                                 std::span<std::uint8_t> out) noexcept;
/// Swaps whole blocks of `in` into `out` (which may be the same memory); returns the bytes done.
std::size_t swapUnitsAvx2(ByteSpan in, std::uint8_t* out) noexcept;
#endif

}  // namespace zantrel

#pragma once
// Escaping on vectors for quoted-printable and URL encoding, chosen in quoted_printable.cpp and
// url_encode.cpp only.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::escape {

struct Progress {
  std::size_t consumed = 0;
  std::size_t produced = 0;
};

#if defined(ZT_X86_64)
// Up to 64 bytes behind what the encoding kernels write may be overwritten.

/// Encodes the middle of a quoted-printable line: stops as soon as `room` columns are reached, in
/// front of a CRLF, at the end of the input, or earlier where most bytes need an escape and the
/// caller's table is faster. Blanks at line ends are left to the caller.
Progress quotedPrintableLineAvx2(const std::uint8_t* in, std::size_t size, std::size_t room,
                                 char* out) noexcept;
Progress quotedPrintableLineAvx512(const std::uint8_t* in, std::size_t size, std::size_t room,
                                   char* out) noexcept;

/// URL-encodes the whole input; returns the characters written.
std::size_t urlAvx512(const std::uint8_t* in, std::size_t size, char* out) noexcept;

/// Decodes what stands in front of the first "%"; returns how many bytes that is. Writes no further
/// than the input is long.
std::size_t urlRunAvx2(const char* in, std::size_t size, std::uint8_t* out) noexcept;

#endif

}  // namespace zantrel::escape

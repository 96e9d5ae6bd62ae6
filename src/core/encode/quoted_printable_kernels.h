#pragma once
// The vector paths of quoted-printable decoding, chosen in quoted_printable.cpp only.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

#if defined(ZT_X86_64)
namespace zantrel::quoted_printable {

/// Copy the bytes in front of the first "=", LF or zero byte and return how many they are. Up to 64
/// bytes behind the copy may be overwritten.
std::size_t copyRunAvx2(const char* in, std::size_t size, std::uint8_t* out) noexcept;
std::size_t copyRunAvx512(const char* in, std::size_t size, std::uint8_t* out) noexcept;

struct Progress {
  std::size_t consumed = 0;
  std::size_t produced = 0;
};

/// Decodes up to the first thing that is neither text, an escape, a soft break without blanks, nor
/// a CRLF without blanks in front, or until escapes become rare; leaves the last bytes of the text
/// to the caller. `afterCr` says that a CR stands in front of the text.
Progress decodeBulkAvx512(const char* in, std::size_t size, bool afterCr,
                          std::uint8_t* out) noexcept;

}  // namespace zantrel::quoted_printable
#endif

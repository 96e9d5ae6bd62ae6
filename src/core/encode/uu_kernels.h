#pragma once
// The vector paths of UU encoding, chosen in uu.cpp only.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::uu {

inline constexpr std::size_t kBytesPerLine = 45;
inline constexpr std::size_t kMaxLineCount = 63;

/// Bytes and characters that decoding a line may use from its first data on, whatever its count.
inline constexpr std::size_t kDecodeWrites = 80;
inline constexpr std::size_t kDecodeReads = 96;

#if defined(ZT_X86_64)
/// Encodes full lines, each with its count and CRLF, and returns how many bytes of input they took.
/// The last bytes of the input are left over, so the lines behind give the room it uses too much.
std::size_t encodeLinesAvx2(const std::uint8_t* in, std::size_t size, char* out) noexcept;

/// Decodes the data of one line, `count` bytes.
void decodeLineAvx2(const char* in, std::size_t count, std::uint8_t* out) noexcept;
#endif

}  // namespace zantrel::uu

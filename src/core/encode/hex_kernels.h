#pragma once
// The vector paths of hexadecimal text, chosen in hex.cpp only. Each handles a prefix of its input,
// returns how much of it, and leaves the rest to the portable code.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

#if defined(ZT_X86_64)
namespace zantrel::hex {

std::size_t encodeAvx2(const std::uint8_t* in, std::size_t size, char* out) noexcept;
std::size_t encodeAvx512(const std::uint8_t* in, std::size_t size, char* out) noexcept;
/// Counted in pairs of characters.
std::size_t decodeAvx2(const char* in, std::size_t pairs, std::uint8_t* out) noexcept;
std::size_t decodeAvx512(const char* in, std::size_t pairs, std::uint8_t* out) noexcept;

}  // namespace zantrel::hex
#endif

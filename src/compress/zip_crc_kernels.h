#pragma once
// The CRC-32 register, not inverted, moved over bytes; zip_crc.cpp chooses among these.

#include <cstddef>
#include <cstdint>

#include "platform/cpu_features.h"

namespace zantrel::crc32 {

std::uint32_t portable(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) noexcept;

#if defined(ZT_X86_64)
/// At least this many bytes.
inline constexpr std::size_t kLeastFolded = 16;
std::uint32_t pclmul(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) noexcept;
std::uint32_t vpclmul512(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) noexcept;
#endif

/// The generator without its term x^32, the highest power in the lowest bit.
inline constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;

}  // namespace zantrel::crc32

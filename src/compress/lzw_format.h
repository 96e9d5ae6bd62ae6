#pragma once
// The .Z format of compress: three bytes of header, then codes of growing width, the lowest bit of
// a byte first. Codes come in groups of eight, so that a group has as many bytes as its codes bits;
// a group that is cut short by another width is filled up.

#include <cstddef>
#include <cstdint>

namespace zantrel::lzw {

constexpr std::uint8_t kSignature[] = {0x1F, 0x9D};
constexpr std::size_t kHeaderBytes = 3;
// Of the third byte of the header.
constexpr unsigned kMaxBitsMask = 0x1F;
constexpr unsigned kReservedMask = 0x60;
constexpr unsigned kBlockMode = 0x80;  // one code clears the table

constexpr unsigned kMinBits = 9;
constexpr unsigned kMaxBits = 16;
constexpr std::size_t kMaxCodes = std::size_t{1} << kMaxBits;
constexpr unsigned kLiterals = 256;
constexpr unsigned kClear = 256;  // in block mode only
constexpr unsigned kGroup = 8;    // codes

}  // namespace zantrel::lzw

#pragma once
// The header of a gzip member (RFC 1952, section 2.3), written and read in this library's way.

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/bytes.h"
#include "core/data_buffer.h"

namespace zantrel {

class LogBase;
class PrefixedLog;

namespace gzip {

inline constexpr std::size_t kFixedHeaderBytes = 10;
inline constexpr std::size_t kTrailerBytes = 8;
inline constexpr std::size_t kLargestExtra = 65535;

inline constexpr std::uint8_t kId1 = 0x1F;
inline constexpr std::uint8_t kId2 = 0x8B;
inline constexpr std::uint8_t kDeflateMethod = 8;
inline constexpr std::uint8_t kOwnSystem = 11;

// Bits of FLG.
inline constexpr std::uint8_t kText = 0x01;
inline constexpr std::uint8_t kHeaderCrc = 0x02;
inline constexpr std::uint8_t kExtra = 0x04;
inline constexpr std::uint8_t kName = 0x08;
inline constexpr std::uint8_t kComment = 0x10;
inline constexpr std::uint8_t kReserved = 0xE0;

/// Numbers in gzip are written with the least significant byte first.
constexpr std::uint32_t read32(const std::uint8_t* at) noexcept {
  return std::uint32_t{at[0]} | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
         std::uint32_t{at[3]} << 24;
}

}  // namespace gzip

/// Texts are bytes as they stand in the file; this library writes UTF-8.
struct GzipHeader {
  std::uint8_t flags = 0;
  std::uint32_t modified = 0;  ///< seconds since 1970-01-01 UTC; 0: not told
  std::uint8_t extraFlags = 0;
  std::uint8_t system = gzip::kOwnSystem;
  DataBuffer extra;
  std::string name;
  std::string comment;

  /// Whether this library may have written the header, which then may hold fields that no flag
  /// tells of.
  bool mayBeOurs() const noexcept {
    return system == gzip::kOwnSystem && extraFlags == 0 && (flags & ~gzip::kName) == 0;
  }
};

/// Appends the header with the fields that are not empty. Only the name has its flag set, which is
/// deliberate: extra data and a comment stand where they should, but other programs take them for
/// compressed data. Texts end at their first zero byte. False, and logged, for extra data beyond
/// gzip::kLargestExtra and when there is no storage.
bool writeGzipHeader(const GzipHeader& header, DataBuffer& out, LogBase& log);

/// Checks and reads the ten bytes that every header starts with.
bool readGzipFixedHeader(ByteSpan bytes, GzipHeader& header, PrefixedLog& log);

/// Logs what a header tells, as the values of one context.
void logGzipHeader(const GzipHeader& header, LogBase& log);

}  // namespace zantrel

#pragma once
// gzip members made by hand, byte by byte, so that no code under test takes part.

#include <cstdint>
#include <string>
#include <string_view>

namespace zantrel::test {

inline std::string littleEndian(std::uint32_t value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i));
  return out;
}

/// CRC-32 by its definition, bit by bit.
inline std::uint32_t slowCrc32(std::string_view text) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : text) {
    crc ^= static_cast<std::uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320 & (0U - (crc & 1)));
  }
  return ~crc;
}

/// Deflate without compression: stored blocks (RFC 1951, section 3.2.4).
inline std::string storedDeflate(std::string_view text) {
  constexpr std::size_t kLargest = 65535;
  std::string out;
  do {
    const std::string_view block = text.substr(0, kLargest);
    text.remove_prefix(block.size());
    const auto size = static_cast<std::uint32_t>(block.size());
    out += text.empty() ? '\1' : '\0';
    out += littleEndian(size, 2) + littleEndian(~size, 2) + std::string(block);
  } while (!text.empty());
  return out;
}

inline std::string gzipFixedHeader(int flags, int extraFlags = 0, int system = 3) {
  std::string out = "\x1F\x8B\x08";
  out += static_cast<char>(flags);
  out += std::string(4, '\0');
  out += static_cast<char>(extraFlags);
  out += static_cast<char>(system);
  return out;
}

inline std::string gzipTrailer(std::string_view text) {
  return littleEndian(slowCrc32(text), 4) +
         littleEndian(static_cast<std::uint32_t>(text.size()), 4);
}

/// A member with the optional fields that its flags name, and the text stored.
inline std::string gzipMember(std::string_view text, int flags = 0) {
  using namespace std::string_literals;
  std::string out = gzipFixedHeader(flags);
  if ((flags & 4) != 0) out += "\x05\0extra"s;
  if ((flags & 8) != 0) out += "name.txt\0"s;
  if ((flags & 16) != 0) out += "a comment\0"s;
  if ((flags & 2) != 0) out += littleEndian(slowCrc32(out), 2);
  return out + storedDeflate(text) + gzipTrailer(text);
}

/// A member as this library writes it: extra data and comment without their flags.
inline std::string unflaggedMember(std::string_view text, std::string_view extra,
                                   std::string_view name, std::string_view comment) {
  std::string out = gzipFixedHeader(name.empty() ? 0 : 8, 0, 11);
  if (!extra.empty()) {
    out += littleEndian(static_cast<std::uint32_t>(extra.size()), 2) + std::string(extra);
  }
  for (const std::string_view field : {name, comment}) {
    if (!field.empty()) out += std::string(field) + '\0';
  }
  return out + storedDeflate(text) + gzipTrailer(text);
}

}  // namespace zantrel::test

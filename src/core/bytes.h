#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zantrel {

/// Bytes that somebody else owns.
using ByteSpan = std::span<const std::uint8_t>;

inline ByteSpan asBytes(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view asText(ByteSpan bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace zantrel

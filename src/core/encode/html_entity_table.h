#pragma once
// The named character references of HTML, by rising name.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zantrel {

struct HtmlEntity {
  std::uint32_t first : 31;  ///< code point
  std::uint32_t legacy : 1;  ///< recognised without ";" too
  std::uint16_t second;      ///< second code point, or 0
  std::uint16_t nameOffset;  ///< the name ends where the next entry's begins
};

/// The entries; one more with an empty name stands behind the last.
extern const HtmlEntity kHtmlEntities[];
extern const std::size_t kHtmlEntityCount;
extern const char kHtmlEntityNames[];

inline std::string_view htmlEntityName(const HtmlEntity& entity) noexcept {
  return {kHtmlEntityNames + entity.nameOffset,
          static_cast<std::size_t>((&entity)[1].nameOffset - entity.nameOffset)};
}

}  // namespace zantrel

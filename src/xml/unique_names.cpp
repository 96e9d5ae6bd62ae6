#include "xml/unique_names.h"

#include <algorithm>
#include <tuple>

#include "core/sip_hash.h"

namespace zantrel {

const std::string_view* UniqueNames::compareAll() {
  constexpr std::size_t kFew = 24;
  if (names_.size() <= kFew) {
    for (auto name = names_.begin(); name != names_.end(); ++name)
      if (std::find(names_.begin(), name, *name) != name) return &*name;
    return nullptr;
  }
  hashed_.clear();
  for (std::size_t i = 0; i < names_.size(); ++i) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(names_[i].data());
    hashed_.push_back({sipHash(processSipKey(), {bytes, names_[i].size()}), i});
  }
  std::sort(hashed_.begin(), hashed_.end(), [](const Hashed& a, const Hashed& b) {
    return std::tie(a.hash, a.index) < std::tie(b.hash, b.index);
  });
  // Different names with one hash do not happen to whoever does not know the key.
  std::size_t first = names_.size();
  for (std::size_t i = 1; i < hashed_.size(); ++i) {
    const bool isSame = hashed_[i].hash == hashed_[i - 1].hash &&
                        names_[hashed_[i].index] == names_[hashed_[i - 1].index];
    if (isSame) first = std::min(first, hashed_[i].index);
  }
  return first != names_.size() ? &names_[first] : nullptr;
}

}  // namespace zantrel

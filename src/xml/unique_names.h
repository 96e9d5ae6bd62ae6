#pragma once
// Whether the names of an element's attributes are different, in time linear in their size.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zantrel {

class UniqueNames final {
 public:
  void clear() {
    names_.clear();
    seen_ = 0;
    maySeeTwice_ = false;
  }
  /// A name that is not empty.
  void add(std::string_view name) {
    // A bit for some names each: as long as all bits are different, so are the names.
    const auto mixed = static_cast<std::uint8_t>(name.front()) * 7u +
                       static_cast<std::uint8_t>(name.back()) * 5u + name.size();
    const std::uint64_t bit = std::uint64_t{1} << (mixed % 64);
    maySeeTwice_ |= (seen_ & bit) != 0;
    seen_ |= bit;
    names_.push_back(name);
  }
  /// The first name that was there before, or null.
  const std::string_view* findTwice() { return maySeeTwice_ ? compareAll() : nullptr; }

 private:
  struct Hashed {
    std::uint64_t hash;
    std::size_t index;
  };

  const std::string_view* compareAll();

  std::vector<std::string_view> names_;
  std::vector<Hashed> hashed_;
  std::uint64_t seen_ = 0;
  bool maySeeTwice_ = false;
};

}  // namespace zantrel

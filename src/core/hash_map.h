#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/string_buffer.h"
#include "core/zantrel_object.h"

namespace zantrel {

/// Objects and texts by name, in no order. It owns its values. Names that an adversary chooses do
/// not slow it down: the hash is keyed with random bytes.
class HashMap final : public ZantrelObject {
 public:
  HashMap() = default;
  HashMap(const HashMap&) = delete;
  HashMap& operator=(const HashMap&) = delete;

  /// Stores under a name, in place of what stood there.
  void put(std::string_view name, std::unique_ptr<ZantrelObject> value);
  void putString(std::string_view name, std::string_view text);
  /// Null when nothing stands under the name.
  ZantrelObject* get(std::string_view name) const;
  /// Null also when what stands there is no text.
  const StringBuffer* getString(std::string_view name) const;
  bool contains(std::string_view name) const { return map_.find(name) != map_.end(); }
  /// Takes out what stands under the name; null when nothing does.
  std::unique_ptr<ZantrelObject> remove(std::string_view name);
  std::size_t getSize() const noexcept { return map_.size(); }
  void clear() { map_.clear(); }

  /// Calls visit(name, value) for each.
  template <class Visit>
  void forEach(Visit visit) const {
    for (const auto& [name, value] : map_) visit(std::string_view(name), *value);
  }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept;
  };

  std::unordered_map<std::string, std::unique_ptr<ZantrelObject>, Hash, std::equal_to<>> map_;
};

}  // namespace zantrel

#include "core/hash_map.h"

#include <utility>

#include "core/sip_hash.h"

namespace zantrel {

std::size_t HashMap::Hash::operator()(std::string_view name) const noexcept {
  return static_cast<std::size_t>(sipHash(processSipKey(), asBytes(name)));
}

void HashMap::put(std::string_view name, std::unique_ptr<ZantrelObject> value) {
  if (value == nullptr) {
    remove(name);
    return;
  }
  const auto found = map_.find(name);
  if (found != map_.end()) {
    found->second = std::move(value);
  } else {
    map_.emplace(name, std::move(value));
  }
}

void HashMap::putString(std::string_view name, std::string_view text) {
  put(name, std::make_unique<StringBuffer>(text));
}

ZantrelObject* HashMap::get(std::string_view name) const {
  const auto found = map_.find(name);
  return found != map_.end() ? found->second.get() : nullptr;
}

const StringBuffer* HashMap::getString(std::string_view name) const {
  return dynamic_cast<const StringBuffer*>(get(name));
}

std::unique_ptr<ZantrelObject> HashMap::remove(std::string_view name) {
  const auto found = map_.find(name);
  if (found == map_.end()) return nullptr;
  std::unique_ptr<ZantrelObject> value = std::move(found->second);
  map_.erase(found);
  return value;
}

}  // namespace zantrel

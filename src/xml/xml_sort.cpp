// Keys are made once for each child, and sorted with it.

#include "xml/xml_sort.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <deque>
#include <limits>
#include <new>
#include <optional>
#include <vector>

#include "core/byte_order.h"
#include "core/string_buffer.h"
#include "core/unicode_case.h"
#include "xml/tree_node.h"
#include "xml/xml_search.h"

namespace zantrel {
namespace {

template <class Value>
struct Keyed {
  std::optional<Value> key;  // none is smaller than any
  TreeNode* node;
};

/// A text with its first bytes as a number, which settle most comparisons without a look at it.
class TextKey {
 public:
  explicit TextKey(std::string_view text) : text_(text) {
    std::uint8_t head[sizeof head_] = {};
    if (!text.empty()) std::memcpy(head, text.data(), std::min(text.size(), sizeof head));
    head_ = loadWord<std::uint64_t, std::endian::big>(head);
  }
  friend bool operator<(const TextKey& a, const TextKey& b) {
    return a.head_ != b.head_ ? a.head_ < b.head_ : a.text_ < b.text_;
  }

 private:
  std::uint64_t head_;
  std::string_view text_;
};

std::optional<std::string_view> keyOf(const TreeNode& node, const XmlSortKey& key) {
  switch (key.of) {
    case XmlSortKey::Of::Tag:
      return node.tag();
    case XmlSortKey::Of::Content:
      return node.content();
    case XmlSortKey::Of::Attribute:
      break;
  }
  const AttributeSet& attributes = node.attributes();
  const std::ptrdiff_t found = attributes.find(key.attribute);
  if (found < 0) return std::nullopt;
  return attributes[static_cast<std::size_t>(found)].valueView();
}

std::optional<std::string_view> keyOfChild(const TreeNode& child, const XmlSortKey& key) {
  if (key.recordTag.empty()) return keyOf(child, key);
  const TreeNode* const part = findChild(child, key.recordTag);
  return part != nullptr ? keyOf(*part, key) : std::nullopt;
}

std::optional<std::int64_t> numberIn(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range)
    return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                               : std::numeric_limits<std::int64_t>::max();
  if (error != std::errc()) return std::nullopt;
  return number;
}

std::string_view folded(std::string_view text, std::deque<StringBuffer>& kept) {
  StringBuffer& copy = kept.emplace_back(std::string_view());
  if (!appendFoldedCase(text, copy)) throw std::bad_alloc();
  return copy.view();
}

template <class Value, class Convert>
void sortBy(TreeNode& parent, const XmlSortKey& key, const Convert& convert) {
  std::vector<Keyed<Value>> list;
  list.reserve(parent.numChildren());
  for (std::size_t i = 0; i < parent.numChildren(); ++i) {
    TreeNode* const child = parent.child(i);
    const std::optional<std::string_view> text = keyOfChild(*child, key);
    list.push_back({text ? convert(*text) : std::nullopt, child});
  }
  std::stable_sort(list.begin(), list.end(),
                   [up = key.ascending](const Keyed<Value>& a, const Keyed<Value>& b) {
                     return up ? a.key < b.key : b.key < a.key;
                   });
  TreeNode** at = parent.children();
  for (const Keyed<Value>& one : list) *at++ = one.node;
  parent.noteOrder();
}

}  // namespace

void sortChildren(TreeNode& parent, const XmlSortKey& key) {
  if (key.numeric) return sortBy<std::int64_t>(parent, key, numberIn);
  using Text = std::optional<TextKey>;
  if (!key.ignoreCase)
    return sortBy<TextKey>(parent, key,
                           [](std::string_view text) -> Text { return TextKey(text); });
  std::deque<StringBuffer> kept;
  sortBy<TextKey>(parent, key,
                  [&kept](std::string_view text) -> Text { return TextKey(folded(text, kept)); });
}

}  // namespace zantrel

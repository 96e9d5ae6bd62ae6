#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <string_view>

#include "core/ext_ptr_array.h"
#include "core/storage.h"
#include "core/zantrel_object.h"

namespace zantrel {

/// One node of an activity log. Tag and text share one block of exactly their size, because a busy
/// log holds very many small entries.
class LogEntry2 final : public ZantrelObject {
 public:
  enum class Kind : char {
    Context = 'C',   ///< tag and children
    Data = 'T',      ///< tag and text
    Error = 'E',     ///< text
    Info = 'I',      ///< text
    Fragment = 'X',  ///< text: XML that is written as it stands
  };

  LogEntry2() noexcept = default;
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return storage::allocate(size);
  }
  static void operator delete(void* block) noexcept { storage::release(block); }
  static void operator delete(void* block, const std::nothrow_t&) noexcept {
    storage::release(block);
  }
  /// Deletes the children, at any depth without recursion.
  ~LogEntry2() override;

  // Each setter gives the entry its kind and drops what it was before; false when storage cannot
  // be had.
  bool setContext(const char* name);
  bool setError(std::string_view text) { return setText(Kind::Error, text); }
  bool setInfo(std::string_view text) { return setText(Kind::Info, text); }
  bool setFragment(std::string_view text) { return setText(Kind::Fragment, text); }
  /// Blanks inside the tag become "_".
  bool setData(std::string_view tag, std::string_view text);

  Kind kind() const { return kind_; }
  bool hasTag() const { return tagSize_ != kAbsent; }
  bool hasText() const { return textSize_ != kAbsent; }
  std::string_view tag() const { return {bytes_.get(), hasTag() ? tagSize_ : 0}; }
  std::string_view text() const;

  /// The children; null unless this is a context.
  const ExtPtrArray* children() const { return children_.get(); }
  std::int32_t childCount() const { return children_ ? children_->getSize() : 0; }
  const LogEntry2& child(std::int32_t i) const;
  LogEntry2* lastChild() const;
  /// Takes the entry; deletes it and returns false when this is no context or storage is short.
  bool appendChild(std::unique_ptr<LogEntry2> entry);
  void removeLastChild();

 private:
  static constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

  struct Release {
    void operator()(char* block) const noexcept { storage::release(block); }
  };

  bool setText(Kind kind, std::string_view text);
  bool store(const std::string_view* tag, const std::string_view* text);
  void deleteChildren();

  std::unique_ptr<ExtPtrArray> children_;
  Kind kind_ = Kind::Info;
  std::uint32_t tagSize_ = kAbsent;
  std::uint32_t textSize_ = kAbsent;
  std::unique_ptr<char[], Release> bytes_;  // tag, then text
};

}  // namespace zantrel

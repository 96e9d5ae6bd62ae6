#pragma once

#include <string_view>

#include "core/string_buffer.h"

namespace zantrel {

/// A charset: its code page and the name it is known by.
class Charset {
 public:
  Charset() = default;
  explicit Charset(int codePage) { setByCodePage(codePage); }

  /// Takes a charset by any accepted name and keeps the canonical name where there is one, the
  /// given one otherwise. False, with nothing changed, for an unknown name.
  bool setByName(std::string_view name);
  /// Takes a code page. One without a canonical name is kept all the same, with an empty name and
  /// the result false.
  bool setByCodePage(int codePage);

  int codePage() const noexcept { return codePage_; }  ///< 0 while nothing is set
  const StringBuffer& name() const noexcept { return name_; }
  bool isKnown() const noexcept { return codePage_ != 0; }

 private:
  int codePage_ = 0;
  StringBuffer name_;
};

}  // namespace zantrel

#pragma once

#include <string_view>

#include "core/string_buffer.h"
#include "core/zantrel_object.h"

namespace zantrel {

/// A name and its value, as an element of lists: parameters, attributes, form fields.
class StringPair final : public ZantrelObject {
 public:
  StringPair() = default;
  StringPair(std::string_view name, std::string_view value) : name_(name), value_(value) {}

  const StringBuffer& name() const noexcept { return name_; }
  const StringBuffer& value() const noexcept { return value_; }
  StringBuffer& name() noexcept { return name_; }
  StringBuffer& value() noexcept { return value_; }

 private:
  StringBuffer name_;
  StringBuffer value_;
};

}  // namespace zantrel

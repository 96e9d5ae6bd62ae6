#pragma once
// What the tests of all components ask: the activity log, and bytes to hand over.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "core/data_buffer.h"
#include "core/xstring.h"
#include "frame/cls_base.h"

namespace zantrel::test {

inline DataBuffer bytes(std::string_view text) {
  DataBuffer out;
  out.append(text);
  return out;
}

inline std::string logOf(ClsBase& component) {
  XString text;
  component.GetTextLogX(text, false);
  return text.getUtf8();
}

/// Each part stands in the log of the component's last method.
inline void expectLogged(ClsBase& component, std::initializer_list<std::string_view> parts) {
  const std::string log = logOf(component);
  for (const std::string_view part : parts)
    EXPECT_NE(log.find(part), std::string::npos) << "no \"" << part << "\" in\n" << log;
}
inline void expectLogged(ClsBase& component, std::string_view part) {
  expectLogged(component, {part});
}

}  // namespace zantrel::test

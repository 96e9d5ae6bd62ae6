#pragma once
// What the generated surface tests check of every method of a component.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Zantrel::test {

template <class Component>
struct MethodCall {
  const char* name;
  bool (*call)(Component&);  ///< with empty arguments; true when a success value came back
};

/// The log starts with the root, the method's own context and the build date.
template <class Component>
void expectLogsUnderItsName(const std::vector<MethodCall<Component>>& methods) {
  for (const auto& method : methods) {
    SCOPED_TRACE(method.name);
    Component object;
    const bool succeeded = method.call(object);
    const std::string start = "ZantrelLog:\r\n  " + std::string(method.name) + ":\r\n    DllDate: ";
    EXPECT_EQ(object.get_LastErrorText().substr(0, start.size()), start);
    if (succeeded) {
      EXPECT_TRUE(object.get_LastMethodSuccess());
    }
  }
}

template <class Component>
void expectFailsWhenMovedFrom(const std::vector<MethodCall<Component>>& methods) {
  for (const auto& method : methods) {
    SCOPED_TRACE(method.name);
    Component object;
    const Component other(std::move(object));
    EXPECT_FALSE(method.call(object));
    EXPECT_FALSE(object.get_LastMethodSuccess());
    const std::string log = object.get_LastErrorText();
    EXPECT_NE(log.find(method.name), std::string::npos);
    EXPECT_NE(log.find("moved from"), std::string::npos) << log;
    object = Component();
    EXPECT_EQ(object.get_LastErrorText().find("moved from"), std::string::npos);
  }
}

/// For values, which have no log: only that the call comes back.
template <class Component>
void expectCallable(const std::vector<MethodCall<Component>>& methods) {
  for (const auto& method : methods) {
    SCOPED_TRACE(method.name);
    Component object;
    method.call(object);
    Component source;
    const Component other(std::move(source));
    method.call(source);
  }
}

}  // namespace Zantrel::test

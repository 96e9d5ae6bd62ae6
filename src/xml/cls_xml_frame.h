#pragma once
// The forms of method that ClsXml consists of. Bodies get the element, under all locks, and the
// call.

#include <optional>
#include <string_view>

#include "core/log_base.h"
#include "xml/cls_xml.h"

namespace zantrel {

template <class Body>
auto ClsXml::property(const Body& body) {
  const CritSecLock section(*this);
  const XmlLock lock(place_);
  return body(*place_.node());
}

template <class Body>
auto ClsXml::on(const char* name, const Body& body) {
  return call(name, [&](MethodCall& c) {
    const XmlLock lock(place_);
    return body(*place_.node(), c);
  });
}

/// A question: to answer it with "no" is no failure.
template <class Body>
auto ClsXml::ask(const char* name, const Body& body) {
  return on(name, [&](TreeNode& node, MethodCall& c) {
    auto answer = body(node);
    c.setSuccess(true);
    return answer;
  });
}

/// A method on two elements.
template <class Body>
bool ClsXml::onTwo(const char* name, ClsXml& other, const Body& body) {
  return call(name, [&](MethodCall& c) {
    const XmlLock lock(place_, other.place_);
    return body(*place_.node(), *other.place_.node(), c);
  });
}

/// Moves the handle to the node that is found, unless that is null.
template <class Find>
bool ClsXml::move(const char* name, const Find& find) {
  return on(name, [&](TreeNode& node, MethodCall& c) {
    TreeNode* const found = find(node, c.log());
    if (found != nullptr) place_.moveTo(found);
    return found != nullptr;
  });
}

/// Makes another handle on the node that is found, which is of the same tree.
template <class Find>
bool ClsXml::give(const char* name, ClsXml& out, const Find& find) {
  return call(name, [&](MethodCall& c) {
    XmlHandle made;
    {
      const XmlLock lock(place_);
      TreeNode* const found = find(*place_.node(), c.log());
      if (found == nullptr) return false;
      made.moveTo(place_, found);
    }
    out.place_.take(made);
    return true;
  });
}

/// Gives a text of the tree, unless there is none.
template <class Find>
bool ClsXml::text(const char* name, XString& out, const Find& find) {
  return on(name, [&](TreeNode& node, MethodCall& c) {
    const std::optional<std::string_view> found = find(node, c.log());
    if (found) out.setFromUtf8(*found);
    return found.has_value();
  });
}

/// Says what a method did not find; the result is for it to return.
inline std::nullptr_t notFound(LogBase& log, const char* error) {
  log.logError(error);
  return nullptr;
}

/// Text that is a number: white space, a sign and digits; 0 without them.
inline std::int32_t intOf(std::string_view text) {
  return XString(text).intValue();
}

/// Counts and numbers of things, as methods give them.
inline std::int32_t asInt(std::size_t count) {
  return static_cast<std::int32_t>(count);
}

}  // namespace zantrel

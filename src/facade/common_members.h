#pragma once
// The members of api/common.api, which every component has. What concerns the log works for an
// object that was moved from too: its log tells why its calls fail.

#include "facade/holder.h"

namespace zantrel::facade {

template <class Result, class Impl, class Body>
Result withOwner(std::unique_ptr<Impl>& impl, const char* name, const Body& body) noexcept {
  Result result{};
  if (Impl* const owner = ownerOf(impl))
    guarded(owner->native, name, [&] { result = body(*owner); });
  return result;
}

template <class Impl>
std::string rendered(std::unique_ptr<Impl>& impl, const char* name,
                     void (Component::*getter)(XString&)) noexcept {
  return withOwner<std::string>(impl, name, [&](Impl& owner) {
    XString out;
    (owner.native.*getter)(out);
    return toPublic(out);
  });
}

template <class Impl>
std::string get_LastErrorText(std::unique_ptr<Impl>& impl) noexcept {
  return rendered(impl, "LastErrorText", &Component::get_LastErrorText);
}
template <class Impl>
std::string get_LastErrorXml(std::unique_ptr<Impl>& impl) noexcept {
  return rendered(impl, "LastErrorXml", &Component::get_LastErrorXml);
}
template <class Impl>
std::string get_LastErrorHtml(std::unique_ptr<Impl>& impl) noexcept {
  return rendered(impl, "LastErrorHtml", &Component::get_LastErrorHtml);
}

template <class Impl>
bool SaveLastError(std::unique_ptr<Impl>& impl, const Zantrel::Text& path) noexcept {
  return withOwner<bool>(impl, "SaveLastError", [&](Impl& owner) {
    Argument<const XString&, Zantrel::Text> argument(path);
    if (!argument.fits()) return false;
    argument.prepare(false);
    return owner.native.SaveLastError(argument.native());
  });
}

template <class Impl>
std::string get_Version(std::unique_ptr<Impl>& impl) noexcept {
  return withOwner<std::string>(impl, "Version", [](Impl& owner) {
    XString out;
    owner.native.get_Version(out);
    return toPublic(out);
  });
}

template <class Impl>
bool get_LastMethodSuccess(std::unique_ptr<Impl>& impl) noexcept {
  return getThrough<bool>(impl, "LastMethodSuccess",
                          [](auto& native) { return native.get_LastMethodSuccess(); });
}

template <class Impl>
bool get_VerboseLogging(std::unique_ptr<Impl>& impl) noexcept {
  return getThrough<bool>(impl, "VerboseLogging",
                          [](auto& native) { return native.commonSettings().verboseLogging; });
}
template <class Impl>
void put_VerboseLogging(std::unique_ptr<Impl>& impl, bool value) noexcept {
  putThrough(impl, "VerboseLogging", [&](auto& native) {
    native.commonSettings().verboseLogging = value;
    return true;
  });
}

template <class Impl>
unsigned get_HeartbeatMs(std::unique_ptr<Impl>& impl) noexcept {
  return getThrough<unsigned>(impl, "HeartbeatMs",
                              [](auto& native) { return native.commonSettings().heartbeatMs; });
}
template <class Impl>
void put_HeartbeatMs(std::unique_ptr<Impl>& impl, unsigned value) noexcept {
  putThrough(impl, "HeartbeatMs", [&](auto& native) {
    native.commonSettings().heartbeatMs = value;
    return true;
  });
}

template <class Impl>
bool get_EnableEvents(std::unique_ptr<Impl>& impl) noexcept {
  return withOwner<bool>(impl, "EnableEvents", [](Impl& owner) { return owner.enableEvents; });
}
template <class Impl>
void put_EnableEvents(std::unique_ptr<Impl>& impl, bool value) noexcept {
  withOwner<bool>(impl, "EnableEvents", [&](Impl& owner) { return owner.enableEvents = value; });
}

}  // namespace zantrel::facade

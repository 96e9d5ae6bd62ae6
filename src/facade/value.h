#pragma once
// The same road for public classes that are plain values: they have no log, so a refused or failed
// call tells by its result alone, and one that was moved from is an empty value.

#include <memory>

#include "facade/arguments.h"
#include "facade/guard.h"

namespace zantrel::facade {

template <class Native>
struct Value {
  Native native;
};

/// A new value, or null when storage cannot be had.
template <class Impl>
std::unique_ptr<Impl> create() noexcept {
  std::unique_ptr<Impl> impl;
  (void)thrownBy([&] { impl = std::make_unique<Impl>(); });
  return impl;
}

template <class Impl, class R, class Native, class... P, class... A>
R call(std::unique_ptr<Impl>& impl, const char*, R (Native::*method)(P...), A&&... given) noexcept {
  R result{};
  const std::exception_ptr thrown = thrownBy([&] {
    if (!impl) impl = std::make_unique<Impl>();
    result = callNative(
        impl->native, method, true, [](const char*, std::uint64_t) {},
        std::index_sequence_for<A...>{}, given...);
  });
  if (thrown) {
    (clearOutput(given), ...);
    result = R{};
  }
  return result;
}

/// The text of a value that is one; it stays the value's and is valid until its next change.
template <class Impl>
std::string_view textOf(const std::unique_ptr<Impl>& impl) noexcept {
  std::string_view text;
  if (impl) (void)thrownBy([&] { text = impl->native.string().utf8(); });
  return text;
}

}  // namespace zantrel::facade

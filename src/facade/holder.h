#pragma once
// What a public object owns, and the one road from every public member to its component: arguments
// are converted by their types, anything thrown is caught and written to the exception log, and the
// failure value comes back. Every generated member is one call of a function below.

#include <memory>
#include <type_traits>
#include <utility>

#include "facade/arguments.h"
#include "facade/guard.h"
#include "frame/component.h"

namespace zantrel::facade {

template <class Native>
struct Holder {
  Native native;
  bool enableEvents = true;
  /// The component went to another object: what is here only carries the log of calls that fail
  /// for that reason.
  bool movedFrom = false;
};

/// A new component, or null when storage cannot be had: the object then acts like a moved-from one.
template <class Impl>
std::unique_ptr<Impl> create() noexcept {
  std::unique_ptr<Impl> impl;
  (void)thrownBy([&] { impl = std::make_unique<Impl>(); });
  return impl;
}

/// What an object owns; made anew, for its log, after the component went to another object. Null
/// when there is no storage for that.
template <class Impl>
Impl* ownerOf(std::unique_ptr<Impl>& impl) noexcept {
  if (!impl && (impl = create<Impl>())) {
    impl->movedFrom = true;
    guarded(impl->native, "", [&] { impl->native.log().logError(kMovedFrom); });
  }
  return impl.get();
}

/// The inside of a public object; classes befriend it whose objects others take or give.
struct Access {
  template <class Public>
  static auto& impl(Public& object) noexcept {
    return object.impl_;
  }
};

/// An object given to a method, or made by it: its component.
template <class Native, class Public>
requires std::is_base_of_v<Component, Native>
class Argument<Native&, Public> : public PlainArgument {
 public:
  explicit Argument(Public& object) noexcept : owner_(ownerOf(Access::impl(object))) {}
  bool present() const noexcept { return owner_ != nullptr && !owner_->movedFrom; }
  Native& native() noexcept { return owner_->native; }

 private:
  Holder<Native>* owner_;
};

template <class Impl, class R, class Native, class... P, class... A>
R call(std::unique_ptr<Impl>& impl, const char* name, R (Native::*method)(P...),
       A&&... given) noexcept {
  R result{};
  Impl* const owner = ownerOf(impl);
  const bool done = owner != nullptr && guarded(owner->native, name, [&] {
                      if (owner->movedFrom) {
                        reportRefusedCall(owner->native, name, kMovedFrom, 0);
                        (clearOutput(given), ...);
                      } else {
                        const auto refuse = [&](const char* reason, std::uint64_t numBytes) {
                          reportRefusedCall(owner->native, name, reason, numBytes);
                        };
                        result = callNative(owner->native, method, owner->enableEvents, refuse,
                                            std::index_sequence_for<A...>{}, given...);
                      }
                    });
  if (!done) (clearOutput(given), ...);
  return result;
}

/// A method that sets a new object, which is among its arguments: gives that object, or null.
template <class Public, class... A>
std::unique_ptr<Public> make(Public& out, A&&... arguments) noexcept {
  std::unique_ptr<Public> result;
  if (call(std::forward<A>(arguments)...))
    (void)thrownBy([&] { result = std::make_unique<Public>(std::move(out)); });
  return result;
}

// ----------------------------------------------------------------------------------- properties

inline std::string toPublic(const XString& text) {
  return std::string(text.utf8());
}
inline Zantrel::Bytes toPublic(const DataBuffer& bytes) {
  const ByteSpan span = bytes.bytes();
  return {span.begin(), span.end()};
}
inline Zantrel::DateTime toPublic(const SystemTime& time) noexcept {
  return toDateTime(time);
}
template <class T>
requires std::is_arithmetic_v<T> T toPublic(T value)
noexcept {
  return value;
}

template <class Result, class Impl, class Body>
Result getThrough(std::unique_ptr<Impl>& impl, const char* name, const Body& body) noexcept {
  Result result{};
  Impl* const owner = ownerOf(impl);
  if (owner != nullptr && !owner->movedFrom)
    guarded(owner->native, name, [&] {
      const CritSecLock lock(owner->native.criticalSection());
      result = body(owner->native);
    });
  return result;
}

/// A stored property.
template <class Result, class Impl, class Settings, class Field>
requires std::is_object_v<Field> Result get(std::unique_ptr<Impl>& impl, const char* name,
                                            Field Settings::*field)
noexcept {
  return getThrough<Result>(impl, name,
                            [&](auto& native) { return toPublic(native.settings().*field); });
}

/// A computed property whose getter returns the value.
template <class Result, class Impl, class R, class Native>
requires std::is_arithmetic_v<R> Result get(std::unique_ptr<Impl>& impl, const char* name,
                                            R (Native::*getter)())
noexcept {
  return getThrough<Result>(impl, name, [&](Native& native) { return (native.*getter)(); });
}

// The copy of a property, which may be a key or a password, that a getter has been given.
inline void wipeProperty(XString& text) {
  wipeShort(text, text.getSizeUtf8());
}
inline void wipeProperty(DataBuffer& bytes) {
  bytes.secureClear();
}
inline void wipeProperty(const SystemTime&) {}

/// A computed property whose getter fills an XString or a DataBuffer.
template <class Result, class Out, class Impl, class Getter>
Result getFilled(std::unique_ptr<Impl>& impl, const char* name, Getter getter) noexcept {
  return getThrough<Result>(impl, name, [&](auto& native) {
    Out out;
    (native.*getter)(out);
    Result result = toPublic(out);
    wipeProperty(out);
    return result;
  });
}
template <class Result, class Impl, class Out, class Native>
Result get(std::unique_ptr<Impl>& impl, const char* name, void (Native::*getter)(Out&)) noexcept {
  return getFilled<Result, Out>(impl, name, getter);
}
template <class Result, class Impl, class Out, class Native>
Result get(std::unique_ptr<Impl>& impl, const char* name,
           void (Native::*getter)(Out&) const) noexcept {
  return getFilled<Result, Out>(impl, name, getter);
}

template <class Impl, class Body>
bool putThrough(std::unique_ptr<Impl>& impl, const char* name, const Body& body) noexcept {
  bool accepted = false;
  Impl* const owner = ownerOf(impl);
  if (owner == nullptr) return false;
  guarded(owner->native, name, [&] {
    const CritSecLock lock(owner->native.criticalSection());
    if (owner->movedFrom) {
      reportRefusedValue(owner->native, name, kMovedFrom);
    } else {
      accepted = body(owner->native);
    }
  });
  return accepted;
}

/// Hands a value in its native form P to what the setter of a component does with it.
template <class P, class Impl, class Value, class Body>
bool putConverted(std::unique_ptr<Impl>& impl, const char* name, const Value& value,
                  const Body& body) noexcept {
  return putThrough(impl, name, [&](auto& native) {
    Argument<P, Value> argument(value);
    if (!argument.fits()) {
      reportRefusedValue(native, name, kTooLarge);
      return false;
    }
    argument.prepare(false);
    return body(native, argument.native());
  });
}

/// A property whose setter decides.
template <class Impl, class Native, class P, class Value>
bool put(std::unique_ptr<Impl>& impl, const char* name, bool (Native::*setter)(P),
         const Value& value) noexcept {
  return putConverted<P>(impl, name, value,
                         [&](Native& native, P given) { return (native.*setter)(given); });
}

/// A property whose setter makes any value fit.
template <class Impl, class Native, class P, class Value>
void put(std::unique_ptr<Impl>& impl, const char* name, void (Native::*setter)(P),
         const Value& value) noexcept {
  putConverted<P>(impl, name, value, [&](Native& native, P given) {
    (native.*setter)(given);
    return true;
  });
}

inline void store(XString& field, const XString& value) {
  field = value;
}
inline void store(DataBuffer& field, const DataBuffer& value) {
  field.clear();
  field.append(value);
}
template <class T>
requires std::is_arithmetic_v<T>
void store(T& field, T value) noexcept {
  field = value;
}
template <class Field>
using ParameterOf = std::conditional_t<std::is_arithmetic_v<Field>, Field, const Field&>;

/// A stored property.
template <class Impl, class Settings, class Field, class Value>
requires std::is_object_v<Field>
void put(std::unique_ptr<Impl>& impl, const char* name, Field Settings::*field,
         const Value& value) noexcept {
  putConverted<ParameterOf<Field>>(impl, name, value, [&](auto& native, ParameterOf<Field> given) {
    store(native.settings().*field, given);
    return true;
  });
}

}  // namespace zantrel::facade

#pragma once
// Conversion of the arguments and results of one public call, by their types. An Argument stands
// for one parameter: it refuses what the native types cannot hold, gives the native form, and
// brings an output back to the caller.

#include <zantrel/types.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "core/data_buffer.h"
#include "core/xstring.h"
#include "facade/event_bridge.h"
#include "facade/guard.h"
#include "platform/clock.h"

namespace zantrel::facade {

/// Largest number of bytes that a DataBuffer and the UTF-8 form of an XString can hold.
inline constexpr std::uint64_t kMaxBytes = 0xFFFFFFFFu;
inline constexpr std::uint64_t kMaxTextBytes = 0x7FFFFFFEu;

/// UTF-8 bytes that a text needs.
std::uint64_t utf8Size(const Zantrel::Text& text) noexcept;
/// Throws std::bad_alloc when storage cannot be had.
void assignText(XString& to, const Zantrel::Text& from);

/// Overwrites a copy that a call made of what may be a password. Those are short; long texts are
/// documents, and left alone.
inline void wipeShort(XString& text, std::uint64_t size) {
  constexpr std::uint64_t kShort = 4096;
  if (size <= kShort) text.wipe();
}

template <class Native, class Public>
class Argument;

/// Bytes that a call reads where the caller keeps them: an output must not be written over them.
inline bool overlaps(Zantrel::ByteView in, const Zantrel::Bytes& storage) noexcept {
  const auto begin = reinterpret_cast<std::uintptr_t>(storage.data());
  const auto at = reinterpret_cast<std::uintptr_t>(in.data());
  return !in.empty() && at < begin + storage.capacity() && begin < at + in.size();
}
template <class Other>
constexpr bool overlaps(const Other&, const Zantrel::Bytes&) noexcept {
  return false;
}

/// What all arguments share: by default there is something, no limit, and nothing to bring back.
class PlainArgument {
 public:
  bool present() const noexcept { return true; }
  bool fits() const noexcept { return true; }
  std::uint64_t size() const noexcept { return 0; }
  /// Makes the native form. Gets EnableEvents and all that was given to the call.
  template <class... Args>
  void prepare(const bool& enableEvents, const Args&...) noexcept {
    (void)enableEvents;
  }
  /// After the call, for all arguments, before any output is brought back.
  void finish() {}
  void deliver() {}
};

template <class T>
requires std::is_arithmetic_v<T>
class Argument<T, T> : public PlainArgument {
 public:
  explicit Argument(T value) noexcept : value_(value) {}
  T native() const noexcept { return value_; }

 private:
  T value_;
};

template <class T>
requires std::is_arithmetic_v<T>
class Argument<T&, T> : public PlainArgument {
 public:
  explicit Argument(T& out) noexcept : out_(out) { out_ = T{}; }
  T& native() noexcept { return out_; }

 private:
  T& out_;
};

template <>
class Argument<const XString&, Zantrel::Text> : public PlainArgument {
 public:
  explicit Argument(const Zantrel::Text& text) noexcept : text_(text) {}
  ~Argument() { wipeShort(value_, text_.size()); }
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;
  bool fits() const noexcept { return size() <= kMaxTextBytes; }
  std::uint64_t size() const noexcept { return utf8Size(text_); }
  template <class... Args>
  void prepare(const bool&, const Args&...) {
    assignText(value_, text_);
  }
  const XString& native() const noexcept { return value_; }

 private:
  const Zantrel::Text& text_;
  XString value_;
};

/// Text in whatever form the caller has it.
template <>
class Argument<const Zantrel::Text&, Zantrel::Text> : public PlainArgument {
 public:
  explicit Argument(const Zantrel::Text& text) noexcept : text_(text) {}
  bool fits() const noexcept { return size() <= kMaxTextBytes; }
  std::uint64_t size() const noexcept { return utf8Size(text_); }
  const Zantrel::Text& native() const noexcept { return text_; }

 private:
  const Zantrel::Text& text_;
};

/// Text in UTF-8, not copied when it is that already.
template <>
class Argument<std::string_view, Zantrel::Text> : public PlainArgument {
 public:
  explicit Argument(const Zantrel::Text& text) noexcept : text_(text) {}
  bool fits() const noexcept { return size() <= kMaxTextBytes; }
  std::uint64_t size() const noexcept { return utf8Size(text_); }
  template <class... Args>
  void prepare(const bool&, const Args&...) {
    if (text_.isUtf16()) assignText(converted_.emplace(), text_);
  }
  std::string_view native() const noexcept {
    return converted_ ? converted_->utf8() : text_.utf8();
  }

 private:
  const Zantrel::Text& text_;
  std::optional<XString> converted_;
};

template <>
class Argument<const Zantrel::DateTime&, Zantrel::DateTime> : public PlainArgument {
 public:
  explicit Argument(const Zantrel::DateTime& value) noexcept : value_(value) {}
  const Zantrel::DateTime& native() const noexcept { return value_; }

 private:
  const Zantrel::DateTime& value_;
};

template <>
class Argument<Zantrel::DateTime&, Zantrel::DateTime> : public PlainArgument {
 public:
  explicit Argument(Zantrel::DateTime& out) noexcept : out_(out) { out_ = {}; }
  Zantrel::DateTime& native() noexcept { return out_; }

 private:
  Zantrel::DateTime& out_;
};

/// The same date and time as the platform has it. A field that the platform cannot hold becomes one
/// that no date or time has, so that whoever checks it refuses it.
SystemTime toSystemTime(const Zantrel::DateTime& from) noexcept;
Zantrel::DateTime toDateTime(const SystemTime& from) noexcept;

template <>
class Argument<const SystemTime&, Zantrel::DateTime> : public PlainArgument {
 public:
  explicit Argument(const Zantrel::DateTime& value) noexcept : value_(toSystemTime(value)) {}
  const SystemTime& native() const noexcept { return value_; }

 private:
  SystemTime value_;
};

template <>
class Argument<ByteSpan, Zantrel::ByteView> : public PlainArgument {
 public:
  explicit Argument(Zantrel::ByteView bytes) noexcept : bytes_(bytes) {}
  bool fits() const noexcept { return size() <= kMaxBytes; }
  std::uint64_t size() const noexcept { return bytes_.size(); }
  ByteSpan native() const noexcept { return bytes_; }

 private:
  Zantrel::ByteView bytes_;
};

/// Bytes in: borrowed, not copied.
template <>
class Argument<const DataBuffer&, Zantrel::ByteView> : public PlainArgument {
 public:
  explicit Argument(Zantrel::ByteView bytes) noexcept : bytes_(bytes) {}
  bool fits() const noexcept { return size() <= kMaxBytes; }
  std::uint64_t size() const noexcept { return bytes_.size(); }
  template <class... Args>
  void prepare(const bool&, const Args&...) {
    // The buffer is handed on as const: nothing writes through this pointer.
    value_.borrowData(const_cast<std::uint8_t*>(bytes_.data()),
                      static_cast<std::uint32_t>(bytes_.size()));
  }
  const DataBuffer& native() const noexcept { return value_; }

 private:
  Zantrel::ByteView bytes_;
  DataBuffer value_;
};

template <>
class Argument<XString&, std::string> : public PlainArgument {
 public:
  explicit Argument(std::string& out) noexcept : out_(out) {}
  XString& native() noexcept { return value_; }
  void deliver() { out_.assign(value_.utf8()); }

 private:
  std::string& out_;
  XString value_;
};

/// Text and bytes that the component owns and shows.
template <>
class Argument<std::string_view&, std::string> : public PlainArgument {
 public:
  explicit Argument(std::string& out) noexcept : out_(out) {}
  std::string_view& native() noexcept { return view_; }
  void deliver() { out_.assign(view_); }

 private:
  std::string& out_;
  std::string_view view_;
};

template <>
class Argument<ByteSpan&, Zantrel::Bytes> : public PlainArgument {
 public:
  explicit Argument(Zantrel::Bytes& out) noexcept : out_(out) {}
  ByteSpan& native() noexcept { return view_; }
  void deliver() { out_.assign(view_.begin(), view_.end()); }

 private:
  Zantrel::Bytes& out_;
  ByteSpan view_;
};

/// Bytes out: the native buffer writes into the caller's storage while that is large enough, so
/// that a reused vector costs neither an allocation nor a copy.
template <>
class Argument<DataBuffer&, Zantrel::Bytes> : public PlainArgument {
 public:
  explicit Argument(Zantrel::Bytes& out) noexcept : out_(out) {}
  template <class... Args>
  void prepare(const bool&, const Args&... args) {
    if (out_.capacity() == 0 || out_.capacity() > kMaxBytes || (overlaps(args, out_) || ...))
      return;
    out_.resize(out_.capacity());
    value_.borrowData(out_.data(), static_cast<std::uint32_t>(out_.size()));
    value_.clear();
  }
  DataBuffer& native() noexcept { return value_; }
  void deliver() {
    static constexpr std::size_t kSlack = 4096;
    const std::uint8_t* const data = value_.getData2();
    if (value_.isBorrowed() && data == out_.data()) {
      out_.resize(value_.getSize());
    } else if (data == nullptr) {
      out_.clear();
    } else {
      // Engines want some room behind what they write: with it the next result of this size fits.
      out_.clear();
      out_.reserve(value_.getSize() + kSlack);
      out_.assign(data, data + value_.getSize());
    }
  }

 private:
  Zantrel::Bytes& out_;
  DataBuffer value_;
};

/// The event handlers, seen by the component as its progress sink; none when nothing can be raised.
template <>
class Argument<ProgressEvent*, Handlers> : public PlainArgument {
 public:
  explicit Argument(const Handlers& handlers) noexcept : bridge_(handlers) {}
  template <class... Args>
  void prepare(const bool& enableEvents, const Args&...) noexcept {
    bridge_.enableBy(enableEvents);
  }
  ProgressEvent* native() noexcept { return bridge_.active() ? &bridge_ : nullptr; }
  /// Throws again what a handler threw.
  void finish() { bridge_.rethrow(); }

 private:
  EventBridge bridge_;
};

inline void clearOutput(std::string& out) noexcept {
  out.clear();
}
inline void clearOutput(Zantrel::Bytes& out) noexcept {
  out.clear();
}
inline void clearOutput(Zantrel::DateTime& out) noexcept {
  out = {};
}
template <class T>
requires std::is_arithmetic_v<T>
void clearOutput(T& out) noexcept {
  out = T{};
}
/// Everything else is an input.
template <class T>
void clearOutput(const T&) noexcept {}

/// Converts what was given, calls, and brings the outputs back. `refuse` is told why, and the size
/// of input that the native types cannot hold; then nothing is called.
template <class Native, class R, class... P, class Refuse, class... A, std::size_t... I>
R callNative(Native& native, R (Native::*method)(P...), const bool& enableEvents,
             const Refuse& refuse, std::index_sequence<I...>, A&... given) {
  static_assert(sizeof...(P) == sizeof...(A), "the API description and the component differ");
  [[maybe_unused]] std::tuple<Argument<P, std::remove_cv_t<A>>...> arguments(given...);
  const bool present = (std::get<I>(arguments).present() && ...);
  if (!present || !(std::get<I>(arguments).fits() && ...)) {
    if (present) {
      refuse(kTooLarge, std::max({std::uint64_t{0}, std::get<I>(arguments).size()...}));
    } else {
      refuse(kArgumentMovedFrom, std::uint64_t{0});
    }
    (clearOutput(given), ...);
    return R{};
  }
  (std::get<I>(arguments).prepare(enableEvents, given...), ...);
  const R result = (native.*method)(std::get<I>(arguments).native()...);
  (std::get<I>(arguments).finish(), ...);
  (std::get<I>(arguments).deliver(), ...);
  return result;
}

}  // namespace zantrel::facade

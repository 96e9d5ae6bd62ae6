#pragma once
/// The vocabulary of Zantrel's public signatures. Everything else in the public headers is bool,
/// int, unsigned, std::int64_t, double or a component.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#if defined(ZANTREL_STATIC)
#define ZANTREL_API
#elif defined(_WIN32)
#if defined(ZANTREL_BUILDING)
#define ZANTREL_API __declspec(dllexport)
#else
#define ZANTREL_API __declspec(dllimport)
#endif
#else
#define ZANTREL_API __attribute__((visibility("default")))
#endif

namespace zantrel::facade {
struct Access;  // how one public class of the library reaches the inside of another
}

namespace Zantrel {

class ZtString;

/// Bytes given to a method. They stay the caller's and are not copied.
using ByteView = std::span<const std::uint8_t>;

/// Bytes that a method gives back. A method that takes one by reference reuses its capacity.
using Bytes = std::vector<std::uint8_t>;

/// The bytes of a string, for a method that takes a ByteView.
inline ByteView bytesOf(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Text given to a method: UTF-8 or UTF-16 of any usual string type, which it refers to and does
/// not copy. A null pointer is the empty text. Text that a method gives back is UTF-8 in a
/// std::string.
class Text final {
 public:
  constexpr Text() noexcept = default;
  constexpr Text(std::nullptr_t) noexcept {}
  constexpr Text(const char* utf8) noexcept : Text(utf8 ? std::string_view(utf8) : "") {}
  constexpr Text(std::string_view utf8) noexcept : data_(utf8.data()), size_(utf8.size()) {}
  Text(const std::string& utf8) noexcept : Text(std::string_view(utf8)) {}
  Text(const char8_t* utf8) noexcept : Text(utf8 ? std::u8string_view(utf8) : u8"") {}
  Text(std::u8string_view utf8) noexcept : data_(utf8.data()), size_(utf8.size()) {}
  Text(const std::u8string& utf8) noexcept : Text(std::u8string_view(utf8)) {}
  constexpr Text(const char16_t* utf16) noexcept : Text(utf16 ? std::u16string_view(utf16) : u"") {}
  constexpr Text(std::u16string_view utf16) noexcept
      : data_(utf16.data()), size_(utf16.size()), isUtf16_(true) {}
  Text(const std::u16string& utf16) noexcept : Text(std::u16string_view(utf16)) {}
  ZANTREL_API Text(const ZtString& text) noexcept;

  bool isUtf16() const noexcept { return isUtf16_; }
  /// Number of UTF-8 bytes or UTF-16 code units.
  std::size_t size() const noexcept { return size_; }
  /// The text's units; only the form that isUtf16() tells.
  std::string_view utf8() const noexcept { return {static_cast<const char*>(data_), size_}; }
  std::u16string_view utf16() const noexcept {
    return {static_cast<const char16_t*>(data_), size_};
  }

 private:
  const void* data_ = "";
  std::size_t size_ = 0;
  bool isUtf16_ = false;
};

/// Calendar date and time in the Gregorian calendar.
struct DateTime {
  int Year = 0;
  int Month = 0;  ///< 1 to 12
  int Day = 0;    ///< 1 to 31
  int Hour = 0;
  int Minute = 0;
  int Second = 0;
  int Millisecond = 0;

  friend bool operator==(const DateTime&, const DateTime&) = default;
};

/// The completed share of a running method rose.
struct PercentDoneEventArgs {
  unsigned PercentDone = 0;  ///< 0 to 100
  bool Abort = false;        ///< set it to stop the method, which then fails
};

/// A running method asks from time to time whether to stop.
struct AbortCheckEventArgs {
  bool Abort = false;  ///< set it to stop the method, which then fails
};

/// A named fact about the progress of a running method, such as a byte count.
struct ProgressInfoEventArgs {
  std::string Name;
  std::string Value;
};

}  // namespace Zantrel

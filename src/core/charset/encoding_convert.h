#pragma once
// Conversion of text between any two code pages by the library's own tables.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/string_buffer.h"

namespace zantrel {

/// What becomes of a character that the target cannot represent, and of bytes that are not valid in
/// the source. The numbers are those of the Charset component's ErrorAction. Invalid bytes have no
/// character: the entities and the alternative charset treat them as Substitute does, which writes
/// U+FFFD for them where the target has it and "?" elsewhere.
enum class ErrorAction : std::int32_t {
  Substitute = 0,    ///< "?" (U+FFFD in Unicode targets); the conversion reports false
  Drop = 1,          ///< leave it out
  DefaultBytes = 2,  ///< write the configured default bytes
  HexEntity = 3,     ///< "&#xHHHH;"
  DecEntity = 4,     ///< "&#DDDD;"
  AltCharset = 5,    ///< write the character's bytes in the alternative charset
  Fail = 6,          ///< stop at once; the output holds what stood before it
};

struct ConvertOptions {
  ErrorAction action = ErrorAction::Substitute;
  ByteSpan defaultBytes{};
  int altCodePage = 0;
};

/// The code page that default bytes are in for a target. Some targets are defined as a conversion
/// to another page followed by a rewriting of that page's bytes (UTF-7, UTF-16BE, UTF-32 and the
/// ISO-2022 pages); default bytes then are in the page in between, else in the target itself.
int defaultBytesCodePage(int toCodePage) noexcept;

/// A streaming conversion: feed() takes pieces of any size, finish() ends the text.
class CharsetStream {
 public:
  CharsetStream(int fromCodePage, int toCodePage, const ConvertOptions& options = {});
  ~CharsetStream();
  CharsetStream(CharsetStream&&) noexcept;
  CharsetStream& operator=(CharsetStream&&) noexcept;

  /// Ready for another text between the same pages.
  void reset();
  /// False when a code page has no table; then nothing can be converted.
  bool valid() const noexcept;
  /// Converts a piece and appends the result. False when storage could not be had or, with
  /// ErrorAction::Fail, when something could not be converted.
  bool feed(ByteSpan in, DataBuffer& out);
  bool finish(DataBuffer& out);
  /// Both for a text of one piece, which is quicker.
  bool convertAll(ByteSpan in, DataBuffer& out);

  /// Counts since the start, and where the first trouble stood (byte offset in the input; in
  /// UTF-7, whose characters have no bytes of their own, the offset of a byte near it).
  std::uint64_t invalidCount() const noexcept;
  std::uint64_t unmappableCount() const noexcept;
  std::uint64_t firstErrorOffset() const noexcept;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Conversion context for one or more whole-buffer conversions.
class EncodingConvert {
 public:
  EncodingConvert() = default;
  explicit EncodingConvert(const ConvertOptions& options) : options_(options) {}

  /// Appends the converted bytes to `out`. False when anything was invalid or had to be
  /// substituted (the output is there all the same) or when a code page is unknown.
  bool EncConvert(int fromCodePage, int toCodePage, const void* bytes, std::size_t count,
                  DataBuffer& out);
  /// The same by charset name; false with nothing appended for an unknown name.
  bool EncConvert(std::string_view fromCharset, std::string_view toCharset, const void* bytes,
                  std::size_t count, DataBuffer& out);

  /// What went wrong in the last conversion, in words; empty after a clean one.
  const StringBuffer& errorText() const noexcept { return errorText_; }

 private:
  CharsetStream& streamFor(int from, int to);

  int from_ = 0;
  int to_ = 0;
  bool flag_ = false;
  StringBuffer errorText_;
  ConvertOptions options_;
  std::unique_ptr<CharsetStream> stream_;  ///< of the last pages, kept: codecs cost time to make
};

}  // namespace zantrel

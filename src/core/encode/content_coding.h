#pragma once
// The transfer encodings of mail bodies with their settings: base64, quoted-printable and base32
// over the library's buffers. Made on the stack for each use.

#include <cstdint>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class StringBuffer;

/// Every operation appends to its output, which must not hold the input, and returns false only
/// when storage cannot be had.
class ContentCoding final {
 public:
  std::int32_t maxLineLength() const noexcept { return maxLineLength_; }
  /// Characters at which base64 and quoted-printable lines are broken.
  void setMaxLineLength(std::int32_t length) noexcept { maxLineLength_ = length; }

  bool encodeBase64(ByteSpan in, StringBuffer& out) const;
  bool encodeBase64Lines(ByteSpan in, StringBuffer& out) const;
  bool decodeBase64(std::string_view in, DataBuffer& out) const;
  bool encodeQuotedPrintable(ByteSpan in, StringBuffer& out) const;
  bool decodeQuotedPrintable(std::string_view in, DataBuffer& out) const;
  bool encodeBase32(ByteSpan in, StringBuffer& out) const;
  bool decodeBase32(std::string_view in, DataBuffer& out) const;

  /// No bit of it has a meaning yet.
  std::uint32_t flags() const noexcept { return flags_; }
  void setFlags(std::uint32_t flags) noexcept { flags_ = flags; }

 private:
  std::int32_t maxLineLength_ = 72;
  std::uint32_t flags_ = 0;
};

}  // namespace zantrel

#pragma once
// The one place where an encoding's name, as callers and properties give it, becomes an encoding.

#include <cstdint>
#include <string_view>

#include "core/string_buffer.h"
#include "core/xstring.h"

namespace zantrel {

class DataBuffer;

enum class EncodingMode : std::int32_t {
  Base64 = 1,
  QuotedPrintable = 2,
  Hex = 3,
  Url = 4,
  Html = 5,  ///< accepted as a name; nothing is encoded or decoded
  Ansi = 6,  ///< the bytes are text in the system's ANSI code page
  Base32 = 7,
  Uu = 8,
};

class ClsEncode {
 public:
  /// The mode of a name: "-", blanks and case do not matter, beginnings suffice ("q", "ur"), and an
  /// unknown name means base64.
  static EncodingMode modeOf(std::string_view name);
  /// Canonical name: "base64", "qp", "hex", "url", "html", "ansi", "base32" or "uu".
  static const char* nameOf(EncodingMode mode) noexcept;

  void put_EncodingMode(const XString& name) { mode_ = modeOf(name.utf8()); }
  void get_EncodingMode(XString& out) const { out.setFromUtf8(nameOf(mode_)); }
  EncodingMode encodingMode() const noexcept { return mode_; }
  /// What the "begin" line of a UU block says: the file's mode, by default "644", and its name, by
  /// default "file.dat". Decoding a block sets both.
  void put_UuMode(const XString& mode) { uuMode_.setString(mode.utf8()); }
  void get_UuMode(XString& out) const { out.setFromUtf8(uuMode_.view()); }
  void put_UuFilename(const XString& name) { uuFilename_ = name; }
  void get_UuFilename(XString& out) const { out = uuFilename_; }

  /// Encodes bytes as text in the named encoding and sets `out` to it, or appends it. With "html"
  /// `out` stays as it was. False only when storage cannot be had, as for Decode().
  bool Encode(const DataBuffer& bytes, const XString& name, XString& out, bool append) const;
  /// The reverse. Malformed text never fails: see the encodings for what becomes of it.
  bool Decode(const XString& text, const XString& name, DataBuffer& out, bool append);

  /// The same in the encoding that EncodingMode names, replacing `out`.
  bool encodeInMode(const DataBuffer& bytes, XString& out) const;
  bool decodeInMode(const XString& text, DataBuffer& out);

  /// Encodes the bytes that the text has in a charset. False for an unknown charset (nothing is
  /// then encoded) and when a character could not be represented.
  bool EncodeString(const XString& text, const XString& charset, const XString& name, XString& out,
                    bool append) const;
  /// Decodes to bytes and takes them as text in a charset. Always true.
  bool DecodeString(const XString& text, const XString& charset, const XString& name, XString& out,
                    bool append);

 private:
  bool encodeAs(EncodingMode mode, const DataBuffer& bytes, XString& out, bool append) const;
  bool decodeAs(EncodingMode mode, const XString& text, DataBuffer& out, bool append);

  EncodingMode mode_ = EncodingMode::Base64;
  StringBuffer uuMode_{"644"};
  XString uuFilename_{"file.dat"};
};

}  // namespace zantrel

#include "core/encode/cls_encode.h"

#include <utility>

#include "core/ascii_text.h"
#include "core/data_buffer.h"
#include "core/encode/content_coding.h"
#include "core/encode/hex.h"
#include "core/encode/url_encode.h"
#include "core/encode/uu.h"

namespace zantrel {
namespace {

struct NamePrefix {
  std::string_view prefix;
  EncodingMode mode;
};

// Tried in this order, behind the names that begin with "base".
constexpr NamePrefix kPrefixes[] = {
    {"q", EncodingMode::QuotedPrintable}, {"hex", EncodingMode::Hex}, {"ur", EncodingMode::Url},
    {"ht", EncodingMode::Html},           {"an", EncodingMode::Ansi}, {"asc", EncodingMode::Ansi},
};

constexpr const char* kNames[] = {"base64", "qp", "hex", "url", "html", "ansi", "base32", "uu"};

bool setOrAppend(StringBuffer&& encoded, XString& out, bool append) {
  return append ? out.appendUtf8(encoded.view()) : out.setFromUtf8(encoded.view());
}

}  // namespace

EncodingMode ClsEncode::modeOf(std::string_view name) {
  StringBuffer key(name);
  key.removeCharOccurances('-');
  key.removeCharOccurances(' ');
  key.trim2();
  key.toLowerCase();
  if (key.beginsWith("base"))
    return key.containsSubstring("32") ? EncodingMode::Base32 : EncodingMode::Base64;
  for (const NamePrefix& row : kPrefixes)
    if (key.beginsWith(row.prefix)) return row.mode;
  return key.containsSubstringNoCase("uu") ? EncodingMode::Uu : EncodingMode::Base64;
}

const char* ClsEncode::nameOf(EncodingMode mode) noexcept {
  return kNames[static_cast<int>(mode) - 1];
}

bool ClsEncode::Encode(const DataBuffer& bytes, const XString& name, XString& out,
                       bool append) const {
  return encodeAs(modeOf(name.utf8()), bytes, out, append);
}

bool ClsEncode::encodeInMode(const DataBuffer& bytes, XString& out) const {
  return encodeAs(mode_, bytes, out, false);
}

bool ClsEncode::encodeAs(EncodingMode mode, const DataBuffer& bytes, XString& out,
                         bool append) const {
  const ContentCoding coding;
  const ByteSpan in = bytes.bytes();
  StringBuffer encoded;
  bool stored = true;
  switch (mode) {
    case EncodingMode::Base64:
      stored = coding.encodeBase64(in, encoded);
      break;
    case EncodingMode::QuotedPrintable:
      stored = coding.encodeQuotedPrintable(in, encoded);
      break;
    case EncodingMode::Hex:
      stored = hexEncode(in, encoded);
      break;
    case EncodingMode::Url:
      stored = UrlEncode::encode(in, encoded);
      break;
    case EncodingMode::Html:
      return true;
    case EncodingMode::Ansi:
      if (!append) return out.setFromAnsi(bytes.text());
      out.appendFromEncoding(in, "ansi");
      return true;
    case EncodingMode::Base32:
      stored = coding.encodeBase32(in, encoded);
      break;
    case EncodingMode::Uu:
      stored = Uu::encode(in, uuMode_.view(), uuFilename_.utf8(), encoded);
      break;
  }
  return stored && setOrAppend(std::move(encoded), out, append);
}

bool ClsEncode::Decode(const XString& text, const XString& name, DataBuffer& out, bool append) {
  return decodeAs(modeOf(name.utf8()), text, out, append);
}

bool ClsEncode::decodeInMode(const XString& text, DataBuffer& out) {
  return decodeAs(mode_, text, out, false);
}

bool ClsEncode::decodeAs(EncodingMode mode, const XString& text, DataBuffer& out, bool append) {
  const ContentCoding coding;
  if (!append) out.clear();
  switch (mode) {
    case EncodingMode::Base64:
      return coding.decodeBase64(trimmed(text.utf8()), out);
    case EncodingMode::QuotedPrintable:
      return coding.decodeQuotedPrintable(trimmed(text.utf8()), out);
    case EncodingMode::Hex:
      return hexDecode(trimmed(text.utf8()), out);
    case EncodingMode::Url:
      return UrlEncode::decode(text.utf8(), out);
    case EncodingMode::Html:
      return true;
    case EncodingMode::Ansi:
      return out.append(text.ansi());
    case EncodingMode::Base32:
      return coding.decodeBase32(trimmed(text.utf8()), out);
    case EncodingMode::Uu: {
      StringBuffer fileName(uuFilename_.utf8());
      return Uu::decode(text.utf8(), out, uuMode_, fileName) &&
             uuFilename_.setFromUtf8(fileName.view());
    }
  }
  return true;
}

bool ClsEncode::EncodeString(const XString& text, const XString& charset, const XString& name,
                             XString& out, bool append) const {
  DataBuffer bytes;
  const bool converted = text.getConverted(charset.getUtf8(), bytes);
  return Encode(bytes, name, out, append) && converted;
}

bool ClsEncode::DecodeString(const XString& text, const XString& charset, const XString& name,
                             XString& out, bool append) {
  DataBuffer bytes;
  Decode(text, name, bytes, false);
  XString decoded;
  decoded.appendFromEncoding(bytes.bytes(), charset.getUtf8());
  if (append) {
    out.append(decoded);
  } else {
    out = std::move(decoded);
  }
  return true;
}

}  // namespace zantrel

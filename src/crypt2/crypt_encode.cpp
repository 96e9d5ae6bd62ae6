// The members of ClsCrypt that encode, convert, and read and write files.

#include <string_view>

#include "core/charset/charset_request.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "crypt2/cls_crypt.h"
#include "frame/text_to_charset.h"

namespace zantrel {
namespace {

bool toNamedCharset(MethodCall& call, const XString& text, const XString& charset,
                    DataBuffer& out) {
  if (textToCharset(text, CharsetRequest::parse(charset.utf8()), CharsetOrigin::Argument, out,
                    call.log()))
    return true;
  out.clear();
  return false;
}

}  // namespace

bool ClsCrypt::fromCharset(MethodCall& call, ByteSpan bytes, const XString& charset, XString& out) {
  const CharsetRequest request = CharsetRequest::parse(charset.utf8());
  if (request.codePage == 0) {
    call.log().logError("Unknown charset.");
    call.log().logDataStr("Charset", charset);
    return false;
  }
  // From UTF-8 to UTF-8 bytes would be copied unseen.
  const bool wide = request.codePage == codepage::kUtf8;
  DataBuffer text;
  const bool valid =
      EncodingConvert().EncConvert(request.codePage, wide ? codepage::kUtf16Le : codepage::kUtf8,
                                   bytes.data(), bytes.size(), text);
  if (!valid) {
    call.log().logInfo("Some of the bytes are not text in the charset: U+FFFD stands for them.");
    call.log().logDataStr("Charset", charset);
  }
  return wide ? out.setFromUnicode2({reinterpret_cast<const char16_t*>(text.getData2()),
                                     text.getSize() / sizeof(char16_t)})
              : out.setFromUtf8(text.text());
}

bool ClsCrypt::encodedAs(MethodCall& call, const XString& encoding, const DataBuffer& bytes,
                         XString& out) {
  if (modeOf(encoding.utf8()) == EncodingMode::Html) noteEmptyEncoding(call);
  return Encode(bytes, encoding, out, false);
}

bool ClsCrypt::encodeText(MethodCall& call, const XString& text, const XString& charset,
                          const XString& encoding, XString& out) {
  DataBuffer bytes;
  return toNamedCharset(call, text, charset, bytes) && encodedAs(call, encoding, bytes, out);
}

bool ClsCrypt::decodeText(MethodCall& call, const XString& text, const XString& charset,
                          const XString& encoding, XString& out) {
  DataBuffer bytes;
  return Decode(text, encoding, bytes, false) && fromCharset(call, bytes.bytes(), charset, out);
}

bool ClsCrypt::EncodeStringX(const XString& text, const XString& charset, const XString& encoding,
                             XString& out) {
  return call("EncodeString",
              [&](MethodCall& c) { return encodeText(c, text, charset, encoding, out); });
}

bool ClsCrypt::DecodeStringX(const XString& text, const XString& charset, const XString& encoding,
                             XString& out) {
  return call("DecodeString",
              [&](MethodCall& c) { return decodeText(c, text, charset, encoding, out); });
}

bool ClsCrypt::ReEncodeX(const XString& text, const XString& fromEncoding,
                         const XString& toEncoding, XString& out) {
  return call("ReEncode", [&](MethodCall& c) {
    DataBuffer bytes;
    return Decode(text, fromEncoding, bytes, false) && encodedAs(c, toEncoding, bytes, out);
  });
}

bool ClsCrypt::Base64EncodeX(const XString& text, const XString& charset, XString& out) {
  return call("Base64Encode",
              [&](MethodCall& c) { return encodeText(c, text, charset, XString("base64"), out); });
}

bool ClsCrypt::Base64DecodeX(const XString& text, const XString& charset, XString& out) {
  return call("Base64Decode",
              [&](MethodCall& c) { return decodeText(c, text, charset, XString("base64"), out); });
}

bool ClsCrypt::QuotedPrintableEncodeX(const XString& text, const XString& charset, XString& out) {
  return call("QuotedPrintableEncode",
              [&](MethodCall& c) { return encodeText(c, text, charset, XString("qp"), out); });
}

bool ClsCrypt::QuotedPrintableDecodeX(const XString& text, const XString& charset, XString& out) {
  return call("QuotedPrintableDecode",
              [&](MethodCall& c) { return decodeText(c, text, charset, XString("qp"), out); });
}

bool ClsCrypt::BytesToStringX(const DataBuffer& data, const XString& charset, XString& out) {
  return call("BytesToString",
              [&](MethodCall& c) { return fromCharset(c, data.bytes(), charset, out); });
}

bool ClsCrypt::StringToBytesX(const XString& text, const XString& charset, DataBuffer& out) {
  return call("StringToBytes",
              [&](MethodCall& c) { return toNamedCharset(c, text, charset, out); });
}

bool ClsCrypt::TrimEndingWithX(const XString& text, const XString& ending, XString& out) {
  return call("TrimEndingWith", [&](MethodCall&) {
    std::string_view rest = text.utf8();
    const std::string_view tail = ending.utf8();
    while (!tail.empty() && rest.ends_with(tail)) rest.remove_suffix(tail.size());
    return out.setFromUtf8(rest);
  });
}

bool ClsCrypt::ReadFileX(const XString& path, DataBuffer& out) {
  return call("ReadFile", [&](MethodCall& c) { return out.loadFileUtf8(path.getUtf8(), c.log()); });
}

bool ClsCrypt::WriteFileX(const XString& path, const DataBuffer& data) {
  return call("WriteFile",
              [&](MethodCall& c) { return data.saveToFileUtf8(path.getUtf8(), c.log()); });
}

}  // namespace zantrel

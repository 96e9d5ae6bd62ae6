#include "core/encode/content_coding.h"

#include "core/encode/base32.h"
#include "core/encode/base64.h"
#include "core/encode/quoted_printable.h"

namespace zantrel {

bool ContentCoding::encodeBase64(ByteSpan in, StringBuffer& out) const {
  return base64Encode(in, out);
}

bool ContentCoding::encodeBase64Lines(ByteSpan in, StringBuffer& out) const {
  return base64EncodeLines(in, maxLineLength_, out);
}

bool ContentCoding::decodeBase64(std::string_view in, DataBuffer& out) const {
  return base64Decode(in, out);
}

bool ContentCoding::encodeQuotedPrintable(ByteSpan in, StringBuffer& out) const {
  return quotedPrintableEncode(in, maxLineLength_, out);
}

bool ContentCoding::decodeQuotedPrintable(std::string_view in, DataBuffer& out) const {
  return quotedPrintableDecode(in, out);
}

bool ContentCoding::encodeBase32(ByteSpan in, StringBuffer& out) const {
  return base32Encode(in, out);
}

bool ContentCoding::decodeBase32(std::string_view in, DataBuffer& out) const {
  return base32Decode(in, out);
}

}  // namespace zantrel

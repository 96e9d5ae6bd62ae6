#include "compress/text_pieces.h"

#include <string>

#include "core/charset/charset_request.h"
#include "core/charset/code_page.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

bool convert(CharsetStream& stream, ByteSpan bytes, bool last, DataBuffer& out) {
  return stream.feed(bytes, out) && (!last || stream.finish(out));
}

}  // namespace

bool TextPieces::start(std::string_view charset, LogBase& log) {
  const CharsetRequest request = CharsetRequest::parse(charset.empty() ? "utf-8" : charset);
  // Bytes would go unseen from UTF-8 to itself.
  const bool isUtf8 = request.codePage == codepage::kUtf8;
  stream_.emplace(request.codePage, isUtf8 ? codepage::kUtf16Le : codepage::kUtf8);
  fromUtf16_.reset();
  if (isUtf8) fromUtf16_.emplace(codepage::kUtf16Le, codepage::kUtf8);
  if (request.codePage != codepage::kUnknown && stream_->valid()) return true;
  stream_.reset();
  log.logError("Unknown charset.");
  log.logData("Charset", std::string(request.name).c_str());
  return false;
}

bool TextPieces::decode(ByteSpan bytes, bool last, DataBuffer& utf8) {
  if (!fromUtf16_) return convert(*stream_, bytes, last, utf8);
  DataBuffer units;
  return convert(*stream_, bytes, last, units) && convert(*fromUtf16_, units.bytes(), last, utf8);
}

bool TextPieces::add(ByteSpan bytes, bool last, XString& out, LogBase& log) {
  if (!stream_) {
    log.logError("No stream of text was begun.");
    return false;
  }
  DataBuffer utf8;
  const bool stored = decode(bytes, last, utf8) && out.appendUtf8(utf8.text());
  if (!stored) log.logError("Out of memory.");
  if (last && stream_->invalidCount() != 0) {
    log.logInfo("Some of the expanded bytes are not valid in the charset.");
    log.logData64("NumInvalid", static_cast<std::int64_t>(stream_->invalidCount()));
    log.logData64("FirstErrorAt", static_cast<std::int64_t>(stream_->firstErrorOffset()));
  }
  return stored;
}

bool textOfBytes(ByteSpan bytes, std::string_view charset, XString& out, LogBase& log) {
  TextPieces text;
  return text.start(charset, log) && text.add(bytes, true, out, log);
}

}  // namespace zantrel

#include "charset/conversion.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "core/charset/byte_order_mark.h"
#include "core/charset/charset_naming.h"
#include "core/charset/charset_request.h"
#include "core/charset/code_page.h"
#include "core/charset/html_charset.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {
namespace {

// Small enough to stay in the second-level cache together with its output, large enough that the
// cost of a callback and of a system call does not show. A document's head is one block.
constexpr std::size_t kBlockBytes = 65536;
static_assert(kBlockBytes == kHtmlHeadBytes);

std::uint64_t unitBytesOf(int codePage) {
  switch (codePage) {
    case codepage::kUtf16Le:
    case codepage::kUtf16Be:
      return 2;
    case codepage::kUtf32Le:
    case codepage::kUtf32Be:
      return 4;
    default:
      return 1;
  }
}

/// The name that a document is to declare: the one given, unless it would need quotes or means
/// something else on every machine.
std::string declaredName(std::string_view given, int codePage) {
  const bool plain = std::all_of(given.begin(), given.end(), [](char c) {
    return c > ' ' && c < 127 && std::string_view("\"'<>&=`/").find(c) == std::string_view::npos;
  });
  StringBuffer canonical;
  const bool ansi = StringBuffer(given).equalsIgnoreCase("ansi");
  if ((!plain || ansi) && CharsetNaming::codePageToCharset(codePage, canonical)) {
    return std::string(canonical.view());
  }
  return std::string(given);
}

}  // namespace

int lookUpCharset(const XString& name, const char* tag, LogBase& log) {
  const CharsetRequest request = CharsetRequest::parse(name.getUtf8Sb().view());
  log.logData(tag, std::string(request.name).c_str());
  const int codePage = request.codePage;
  if (codePage == 0) {
    log.logError(request.name.empty() ? "No charset is set." : "Unknown charset.");
  } else if (findCodePage(codePage) == nullptr) {
    log.logDataLong("CodePage", codePage);
    log.logError("There is no conversion table for this charset.");
    return 0;
  }
  return codePage;
}

Conversion::Conversion(const CharsetSettings& settings, LogBase& log, ProgressMonitor& monitor)
    : settings_(settings), log_(log), monitor_(monitor) {
  monitor_.setHoldFinal100(true);
}

bool Conversion::setSource(const XString& name) {
  from_ = lookUpCharset(name, "FromCharset", log_);
  return from_ != 0;
}

bool Conversion::setTarget(const XString& name) {
  to_ = lookUpCharset(name, "ToCharset", log_);
  const CharsetRequest request = CharsetRequest::parse(name.getUtf8Sb().view());
  toName_.setString(request.name);
  writeMark_ = request.byteOrderMark;
  return to_ != 0;
}

bool Conversion::convert(ByteSpan in, DataBuffer& out) {
  monitor_.reset(static_cast<std::int64_t>(in.size()));
  return begin(out) && feed(in, out) && finish(out);
}

bool Conversion::convert(DataSource& in, DataSink& out) {
  ByteSpan head;
  if (!in.nextBlock(kBlockBytes, head, log_)) return false;
  return convertFile(head.subspan(obeyMark(head)), in, out);
}

bool Conversion::convertHtml(ByteSpan in, DataBuffer& out) {
  monitor_.reset(static_cast<std::int64_t>(in.size()));
  DataBuffer edited;
  std::size_t headBytes = 0;
  return editHtml(in, edited, headBytes) && begin(out) && feed(edited.bytes(), out) &&
         feed(in.subspan(headBytes), out) && finish(out);
}

bool Conversion::convertHtml(DataSource& in, DataSink& out) {
  ByteSpan head;
  DataBuffer edited;
  std::size_t headBytes = 0;
  if (!in.nextBlock(kBlockBytes, head, log_) || !editHtml(head, edited, headBytes)) return false;
  edited.append(head.subspan(headBytes));
  return convertFile(edited.bytes(), in, out);
}

bool Conversion::convertFile(ByteSpan head, DataSource& in, DataSink& out) {
  counted_ = in.size() >= 0;
  monitor_.reset(std::max<std::int64_t>(in.size(), 0));
  DataBuffer converted;
  if (!begin(converted)) return false;
  for (ByteSpan block = head; !block.empty();) {
    if (!feed(block, converted) || !out.write(converted.bytes(), log_)) return false;
    converted.clear();
    if (!in.nextBlock(kBlockBytes, block, log_)) return false;
  }
  return finish(converted) && out.write(converted.bytes(), log_);
}

/// A mark at the start of a Unicode file says in which form the file is; in other charsets the same
/// bytes are text. Returns how much of it the conversion does not skip by itself.
std::size_t Conversion::obeyMark(ByteSpan head) {
  const ByteOrderMark mark = findByteOrderMark(head, from_);
  if (mark.codePage == 0 || byteOrderMarkOf(from_).empty()) return 0;
  StringBuffer name;
  CharsetNaming::codePageToCharset(mark.codePage, name);
  log_.logData("ByteOrderMark", name.getString());
  from_ = mark.codePage;
  const bool skip = unitBytesOf(from_) == 4 || writeMark_;
  editedBy_ = skip ? static_cast<std::int64_t>(mark.length) : 0;
  return skip ? mark.length : 0;
}

/// Settles the source by the document's own word and puts the target's name into its head.
bool Conversion::editHtml(ByteSpan html, DataBuffer& edited, std::size_t& headBytes) {
  const HtmlCharset found(html, from_);
  const std::string declared = found.name();
  if (!declared.empty()) log_.logData("HtmlCharset", declared.c_str());
  if (const int codePage = found.codePage(); codePage != 0) {
    from_ = codePage;
  } else if (from_ == 0) {
    return fail(declared.empty()
                    ? "The document declares no charset, and FromCharset is not set."
                    : "The document declares an unknown charset, and FromCharset is not set.");
  }
  headBytes = found.rewrite(html, declaredName(toName_.view(), to_), edited);
  const ByteSpan unmarked = html.subspan(found.mark().length);
  const auto changed =
      std::mismatch(edited.bytes().begin(), edited.bytes().end(), unmarked.begin(), unmarked.end());
  editedAt_ = static_cast<std::uint64_t>(changed.first - edited.bytes().begin());
  editedBy_ = static_cast<std::int64_t>(headBytes) - static_cast<std::int64_t>(edited.getSize());
  return true;
}

bool Conversion::begin(DataBuffer& out) {
  const bool known = settings_.errorAction >= static_cast<std::int32_t>(ErrorAction::Substitute) &&
                     settings_.errorAction <= static_cast<std::int32_t>(ErrorAction::Fail);
  options_.action =
      known ? static_cast<ErrorAction>(settings_.errorAction) : ErrorAction::Substitute;
  options_.defaultBytes = settings_.defaultBytes.bytes();
  if (options_.action == ErrorAction::AltCharset) {
    options_.altCodePage = lookUpCharset(settings_.altToCharset, "AltToCharset", log_);
    if (options_.altCodePage == 0) return false;
  }
  if (writeMark_) out.append(byteOrderMarkOf(to_));
  bytesOut_ = out.getSize();
  if (from_ != to_) stream_.emplace(from_, to_, options_);
  return true;
}

bool Conversion::feed(ByteSpan in, DataBuffer& out) {
  while (!in.empty()) {
    const ByteSpan piece = in.first(std::min(in.size(), kBlockBytes));
    in = in.subspan(piece.size());
    const std::uint32_t before = out.getSize();
    const bool done = stream_ ? stream_->feed(piece, out) : out.append(piece);
    bytesIn_ += piece.size();
    if (out.getSize() < before) return fail("There is not enough memory for the converted text.");
    bytesOut_ += out.getSize() - before;
    if (!done) return logLosses(), false;
    if (counted_) {
      monitor_.consume(static_cast<std::int64_t>(piece.size()));
    } else {
      monitor_.abortCheck(0);
    }
    if (monitor_.aborted()) return fail("Aborted by the application.");
  }
  return true;
}

bool Conversion::finish(DataBuffer& out) {
  const std::uint32_t before = out.getSize();
  const bool done = !stream_ || stream_->finish(out);
  if (out.getSize() < before) return fail("There is not enough memory for the converted text.");
  bytesOut_ += out.getSize() - before;
  log_.logData64("NumBytesIn", static_cast<std::int64_t>(bytesIn_));
  log_.logData64("NumBytesOut", static_cast<std::int64_t>(bytesOut_));
  const bool clean = !stream_ || stream_->invalidCount() + stream_->unmappableCount() == 0;
  if (!clean || !done) logLosses();
  monitor_.end();
  if (monitor_.aborted()) return fail("Aborted by the application.");
  // Output in big-endian UTF-16 counts as converted whatever had to be substituted: deliberate.
  const bool tolerated = options_.action != ErrorAction::Substitute || to_ == codepage::kUtf16Be;
  return done && (clean || tolerated);
}

bool Conversion::fail(const char* error) {
  log_.logError(error);
  return false;
}

/// Says what could not be converted, and where the first of it stands.
void Conversion::logLosses() {
  const bool failed = options_.action == ErrorAction::Fail ||
                      (options_.action == ErrorAction::Substitute && to_ != codepage::kUtf16Be);
  if (failed) {
    log_.logError("Character encoding conversion failed.");
    log_.logData64("NumCharsIn", static_cast<std::int64_t>(bytesIn_ / unitBytesOf(from_)));
    log_.logDataLong("Charset", to_);
    log_.logData64("ConvertedToNumBytes", static_cast<std::int64_t>(bytesOut_));
  }
  if (!stream_) return;
  if (stream_->invalidCount() > 0) {
    log_.logInfo("Some of the input is not valid in the source charset.");
    log_.logData64("NumInvalid", static_cast<std::int64_t>(stream_->invalidCount()));
  }
  if (stream_->unmappableCount() > 0) {
    log_.logInfo("The target charset lacks some characters of the input.");
    log_.logData64("NumUnmappable", static_cast<std::int64_t>(stream_->unmappableCount()));
  }
  const std::uint64_t at = stream_->firstErrorOffset();
  log_.logData64("FirstErrorAt", static_cast<std::int64_t>(at) + (at >= editedAt_ ? editedBy_ : 0));
}

}  // namespace zantrel

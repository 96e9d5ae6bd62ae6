#include "charset/verification.h"

#include <algorithm>

#include "charset/conversion.h"
#include "core/charset/byte_order_mark.h"
#include "core/charset/code_page.h"
#include "core/data_buffer.h"
#include "core/data_source.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {
namespace {

constexpr std::size_t kBlockBytes = 65536;

/// Where text is converted to so that its validity shows: a page that has every character, and not
/// the page itself, to which bytes would be copied unseen.
int witnessOf(int codePage) {
  return codePage == codepage::kUtf8 ? codepage::kUtf16Le : codepage::kUtf8;
}

/// The other byte order of UTF-16 and UTF-32; other pages have one order only.
int otherOrderOf(int codePage) {
  switch (codePage) {
    case codepage::kUtf16Le:
      return codepage::kUtf16Be;
    case codepage::kUtf16Be:
      return codepage::kUtf16Le;
    case codepage::kUtf32Le:
      return codepage::kUtf32Be;
    case codepage::kUtf32Be:
      return codepage::kUtf32Le;
    default:
      return codePage;
  }
}

}  // namespace

bool Verification::setCharset(const XString& name) {
  codePage_ = lookUpCharset(name, "Charset", log_);
  return codePage_ != 0;
}

bool Verification::verify(ByteSpan bytes) {
  CharsetStream stream(codePage_, witnessOf(codePage_), {ErrorAction::Fail});
  return check(stream, bytes, false) && check(stream, {}, true);
}

bool Verification::verify(DataSource& in) {
  monitor_.setHoldFinal100(true);
  monitor_.reset(std::max<std::int64_t>(in.size(), 0));
  ByteSpan block;
  if (!in.nextBlock(kBlockBytes, block, log_)) return false;
  if (findByteOrderMark(block, codePage_).codePage == otherOrderOf(codePage_)) {
    codePage_ = otherOrderOf(codePage_);
    log_.logInfo("The byte-order mark tells the other byte order.");
  }
  CharsetStream stream(codePage_, witnessOf(codePage_), {ErrorAction::Fail});
  while (!block.empty()) {
    if (!check(stream, block, false)) return false;
    if (in.size() >= 0) {
      monitor_.consume(static_cast<std::int64_t>(block.size()));
    } else {
      monitor_.abortCheck(0);
    }
    if (monitor_.aborted()) {
      log_.logError("Aborted by the application.");
      return false;
    }
    if (!in.nextBlock(kBlockBytes, block, log_)) return false;
  }
  monitor_.end();
  return check(stream, {}, true);
}

bool Verification::check(CharsetStream& stream, ByteSpan bytes, bool last) {
  DataBuffer unused;
  const auto feed = [&](ByteSpan piece) {
    unused.clear();
    return stream.feed(piece, unused);
  };
  bool valid = true;
  for (std::size_t at = 0; valid && at < bytes.size(); at += kBlockBytes) {
    valid = feed(bytes.subspan(at, std::min(kBlockBytes, bytes.size() - at)));
  }
  if (valid && (!last || stream.finish(unused))) return true;
  if (stream.invalidCount() + stream.unmappableCount() == 0) {
    log_.logError("There is not enough memory to verify the text.");
    return false;
  }
  log_.logError("The text is not valid in this charset.");
  log_.logData64("FirstErrorAt", static_cast<std::int64_t>(stream.firstErrorOffset()));
  return false;
}

}  // namespace zantrel

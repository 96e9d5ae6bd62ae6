#include "compress/gzip_reader.h"

#include <algorithm>
#include <string>

#include "core/data_sink.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {
namespace {

constexpr std::size_t kOutputBlock = 65536;
// Room for the largest extra data, a long comment, and as much deflate as tells noise from data.
constexpr std::size_t kTrialInput = 3 * 65536;
// A trial may stop when so much of either was good.
constexpr std::size_t kTrialDeflate = 4096;
constexpr std::uint64_t kTrialOutput = 1 << 20;
// Longer texts of a header are read over but not kept.
constexpr std::size_t kLongestText = 65536;
// A file may have any number of members; the log tells of so many.
constexpr std::int64_t kLoggedMembers = 100;

/// Whether a text can be one that a person wrote, in ASCII or beyond.
bool isText(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    return static_cast<std::uint8_t>(c) < ' ' && c != '\t' && c != '\r' && c != '\n';
  });
}

bool takeTextFrom(ByteSpan& bytes, std::string& text) {
  const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
  if (end == bytes.end() || end == bytes.begin()) return false;
  text.assign(bytes.begin(), end);
  bytes = bytes.subspan(text.size() + 1);
  return true;
}

}  // namespace

GzipReader::GzipReader(DataSource& source, LogBase& log, ProgressMonitor* progress,
                       const char* logPrefix)
    : input_(source),
      sentences_(logPrefix, log),
      log_(log),
      progress_(progress),
      block_(kOutputBlock) {}

bool GzipReader::fail(const char* sentence) {
  sentences_.logError(sentence);
  return false;
}

bool GzipReader::report(std::int64_t bytes) {
  if (progress_ == nullptr) return true;
  progress_->consume(bytes);
  return !progress_->aborted() || fail("Aborted by the application.");
}

bool GzipReader::decompress(DataSink& out) {
  for (bool another = true; another;) {
    if (!readMember(out)) return false;
    ++members_;
    if (!atAnotherMember(another)) return false;
  }
  return true;
}

bool GzipReader::readMember(DataSink& out) {
  GzipHeader header;
  if (!readHeader(header)) return false;
  ++headers_;
  if (logHeaders_ && members_ < kLoggedMembers) logGzipHeader(header, log_);
  if (members_ == 0) firstHeader_ = std::move(header);
  return inflateTo(out);
}

bool GzipReader::readHeader(GzipHeader& header) {
  const std::int64_t before = input_.position();
  inflate_.setTrace(nullptr);
  if (!input_.fill(gzip::kFixedHeaderBytes, log_) ||
      !readGzipFixedHeader(input_.ahead(), header, sentences_)) {
    return false;
  }
  if (members_ < kLoggedMembers) sentences_.logInfo("GZip header OK.");
  crc_.beginStream();
  take(gzip::kFixedHeaderBytes);
  bool found = false;
  if (header.mayBeOurs() && !readUnflaggedFields(header, found)) return false;
  return (found || readFlaggedFields(header)) && report(input_.position() - before);
}

/// Takes bytes that count for the header's checksum.
void GzipReader::take(std::size_t count) {
  crc_.moreData(input_.ahead().first(count));
  input_.take(count);
}

bool GzipReader::takeBytes(std::size_t count, std::uint8_t* to) {
  if (!input_.fill(count, log_)) return false;
  if (input_.ahead().size() < count) return fail("The gzip header is not complete.");
  std::copy_n(input_.ahead().begin(), count, to);
  take(count);
  return true;
}

bool GzipReader::takeText(std::string& text) {
  for (;;) {
    if (!input_.fill(1, log_)) return false;
    const ByteSpan ahead = input_.ahead();
    if (ahead.empty()) return fail("The gzip header is not complete.");
    const auto end = std::find(ahead.begin(), ahead.end(), std::uint8_t{0});
    const auto size = static_cast<std::size_t>(end - ahead.begin());
    text.append(ahead.begin(), ahead.begin() + static_cast<std::ptrdiff_t>(
                                                   std::min(size, kLongestText - text.size())));
    const bool ended = end != ahead.end();
    take(size + (ended ? 1 : 0));
    if (ended) return true;
  }
}

bool GzipReader::takeExtra(DataBuffer& extra) {
  std::uint8_t length[2];
  if (!takeBytes(sizeof length, length)) return false;
  const std::size_t size = length[0] | std::size_t{length[1]} << 8;
  std::uint8_t* const to = extra.prepare(size);
  if (to == nullptr && size != 0) return fail("Out of memory.");
  if (!takeBytes(size, to)) return false;
  extra.commit(size);
  return true;
}

bool GzipReader::readFlaggedFields(GzipHeader& header) {
  const auto has = [&](std::uint8_t flag) { return (header.flags & flag) != 0; };
  return (!has(gzip::kExtra) || takeExtra(header.extra)) &&
         (!has(gzip::kName) || takeText(header.name)) &&
         (!has(gzip::kComment) || takeText(header.comment)) &&
         (!has(gzip::kHeaderCrc) || checkHeaderCrc());
}

bool GzipReader::checkHeaderCrc() {
  const std::uint32_t computed = crc_.endStream() & 0xFFFF;
  std::uint8_t stored[2];
  if (!takeBytes(sizeof stored, stored)) return false;
  const std::uint32_t expected = stored[0] | std::uint32_t{stored[1]} << 8;
  if (expected == computed) return true;
  log_.logHex("storedCrc", expected);
  log_.logHex("computedCrc", computed);
  return fail("The checksum of the gzip header does not match.");
}

/// Looks for what only this library's own headers hold. `found` says whether fields, be they none,
/// were found behind which the data inflate; the header is left to be read by its flags otherwise.
///
/// A member that fits into the trial is told by its checksum. Of a longer one a comment that reads
/// as text is believed before the flags: as deflate it may stand for a short block that ends with
/// the comment's zero byte, while hardly any stream begins with text, a zero byte and a stream.
bool GzipReader::readUnflaggedFields(GzipHeader& header, bool& found) {
  // Extra data comes first in the header and in the search, but where its length reads as text.
  static constexpr Layout kLayouts[] = {{false, false}, {true, false}, {true, true}, {false, true}};
  static constexpr Layout kTextLayouts[] = {
      {false, false}, {false, true}, {true, false}, {true, true}};
  if (!input_.fill(kTrialInput, log_)) return false;
  const ByteSpan ahead = input_.ahead();
  const bool sourceEnds = ahead.size() < kTrialInput;
  GzipHeader best;
  std::size_t bestSize = 0;
  int bestRank = 0;
  for (const Layout& layout : isText(asText(ahead.first(std::min<std::size_t>(ahead.size(), 2))))
                                  ? kTextLayouts
                                  : kLayouts) {
    GzipHeader candidate;
    candidate.flags = header.flags;
    candidate.modified = header.modified;
    std::size_t size = 0;
    if (!readFields(ahead, layout, candidate, size)) continue;
    const Trial trial = tryToInflate(ahead.subspan(size), sourceEnds);
    const bool believed = layout.comment && isText(candidate.comment + candidate.name);
    const int rank = trial == Trial::Fails ? 0 : trial == Trial::Whole ? 3 : believed ? 2 : 1;
    if (rank <= bestRank) continue;
    best = std::move(candidate);
    bestSize = size;
    bestRank = rank;
  }
  found = bestRank != 0;
  if (!found) return true;
  header = std::move(best);
  input_.take(bestSize);
  return true;
}

bool GzipReader::readFields(ByteSpan bytes, const Layout& layout, GzipHeader& header,
                            std::size_t& size) {
  ByteSpan rest = bytes;
  if (layout.extra) {
    if (rest.size() < 2) return false;
    const std::size_t extra = rest[0] | std::size_t{rest[1]} << 8;
    if (extra == 0 || rest.size() < 2 + extra || !header.extra.append(rest.subspan(2, extra))) {
      return false;
    }
    rest = rest.subspan(2 + extra);
  }
  if ((header.flags & gzip::kName) != 0 && !takeTextFrom(rest, header.name)) return false;
  if (layout.comment && !takeTextFrom(rest, header.comment)) return false;
  size = bytes.size() - rest.size();
  return true;
}

/// Whether bytes begin as a member's deflate stream does: noise fails within a few bytes or, where
/// it ends by chance, by its checksum. Texts of one repeated letter take longer to fail.
GzipReader::Trial GzipReader::tryToInflate(ByteSpan bytes, bool sourceEnds) {
  const Trial cut = sourceEnds ? Trial::Fails : Trial::Inflates;
  const std::size_t size = bytes.size();
  std::uint32_t crc = 0;
  inflate_.reset();
  for (;;) {
    std::size_t produced = 0;
    const InflateState2::Status status = inflate_.run(bytes, block_, produced);
    crc = ZipCRC::extend(crc, ByteSpan(block_).first(produced));
    if (status == InflateState2::Status::failed) return Trial::Fails;
    if (status == InflateState2::Status::finished) break;
    if (produced < block_.size()) return cut;
    if (size - bytes.size() >= kTrialDeflate || inflate_.totalProduced() >= kTrialOutput) {
      return Trial::Inflates;
    }
  }
  if (bytes.size() < gzip::kTrailerBytes) return cut;
  const bool matches = gzip::read32(bytes.data()) == crc &&
                       gzip::read32(bytes.data() + 4) == inflate_.totalProduced();
  return matches ? Trial::Whole : Trial::Fails;
}

bool GzipReader::inflateTo(DataSink& out) {
  inflate_.reset();
  inflate_.setTrace(trace_ && members_ < kLoggedMembers ? &log_ : nullptr);
  crc_.beginStream();
  const std::uint64_t before = total_;
  for (;;) {
    if (!input_.fill(1, log_)) return false;
    const ByteSpan ahead = input_.ahead();
    ByteSpan rest = ahead;
    std::size_t produced = 0;
    const InflateState2::Status status = inflate_.run(rest, block_, produced);
    const std::size_t taken = ahead.size() - rest.size();
    input_.take(taken);
    const ByteSpan made = ByteSpan(block_).first(produced);
    crc_.moreData(made);
    total_ += produced;
    if (maxSize_ != 0 && total_ > maxSize_) {
      log_.logData64("maxDecompressedSize", static_cast<std::int64_t>(maxSize_));
      return fail("The decompressed data are larger than the limit that was set.");
    }
    if (!out.write(made, log_) || !report(static_cast<std::int64_t>(taken))) return false;
    if (status == InflateState2::Status::finished) {
      return checkTrailer(crc_.endStream(), total_ - before);
    }
    if (status == InflateState2::Status::failed) {
      log_.logDataLong("deflateError", static_cast<std::int32_t>(inflate_.errorCode()));
      return fail("The deflated data are not valid.");
    }
    if (ahead.empty() && produced == 0) return fail("Deflated data ended prematurely.");
  }
}

bool GzipReader::checkTrailer(std::uint32_t crc, std::uint64_t size) {
  if (!input_.fill(gzip::kTrailerBytes, log_)) return false;
  if (input_.ahead().size() < gzip::kTrailerBytes) {
    return fail("The gzip data end before their checksum.");
  }
  const std::uint32_t storedCrc = gzip::read32(input_.ahead().data());
  const std::uint32_t storedSize = gzip::read32(input_.ahead().data() + 4);
  input_.take(gzip::kTrailerBytes);
  const auto size32 = static_cast<std::uint32_t>(size);  // the format counts modulo 2^32
  if (logHeaders_ && members_ < kLoggedMembers) {
    log_.logHex("crc32", crc);
    log_.logData64("uncompressedSize", static_cast<std::int64_t>(size));
  }
  if (storedCrc != crc) {
    log_.logHex("storedCrc", storedCrc);
    log_.logHex("computedCrc", crc);
    return fail("The CRC-32 of the decompressed data does not match.");
  }
  if (storedSize != size32) {
    log_.logData64("storedSize", storedSize);
    log_.logData64("computedSize", size32);
    return fail("The size of the decompressed data does not match.");
  }
  return report(gzip::kTrailerBytes);
}

bool GzipReader::atAnotherMember(bool& another) {
  if (!input_.fill(2, log_)) return false;
  const ByteSpan ahead = input_.ahead();
  another = ahead.size() >= 2 && ahead[0] == gzip::kId1 && ahead[1] == gzip::kId2;
  if (!another && !ahead.empty()) {
    sentences_.logInfo("What follows the gzip data is no gzip data and is ignored.");
    log_.logData64("offset", input_.position());
  }
  return true;
}

}  // namespace zantrel

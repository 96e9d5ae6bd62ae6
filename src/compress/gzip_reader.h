#pragma once
// Reads gzip data (RFC 1952): members one after the other, each with its header, its deflate stream
// and its checksum. Constant memory whatever the input.
//
// This library writes a comment and extra data without the flags that announce them. Such a member
// does not inflate when it is read by its flags. So, where a header may be ours, a first stretch is
// inflated on trial before anything is handed out, and if that fails the fields that we may have
// written are looked for.

#include <cstdint>
#include <span>
#include <vector>

#include "compress/gzip_header.h"
#include "compress/inflate_state2.h"
#include "compress/look_ahead.h"
#include "compress/prefixed_log.h"
#include "compress/zip_crc.h"

namespace zantrel {

class DataSink;
class ProgressMonitor;

class GzipReader final {
 public:
  /// All are used until the reader ends; `progress` may be null and gets the bytes taken from the
  /// source.
  GzipReader(DataSource& source, LogBase& log, ProgressMonitor* progress,
             const char* logPrefix = "");

  /// Whether the inflater writes its trace.
  void setTrace(bool trace) noexcept { trace_ = trace; }
  /// Reading fails as soon as all members together give more bytes than this; 0: no limit.
  void setMaxDecompressedSize(std::uint64_t bytes) noexcept { maxSize_ = bytes; }
  /// Whether what the headers tell is logged.
  void setLogHeaders(bool logHeaders) noexcept { logHeaders_ = logHeaders; }

  /// Writes what all members hold to the sink, which is not committed. False, with the reason
  /// logged, when something is missing or wrong; what came before has been written.
  bool decompress(DataSink& out);

  const GzipHeader& firstHeader() const noexcept { return firstHeader_; }
  /// Headers that were read, and members that were read to their ends.
  std::int64_t headerCount() const noexcept { return headers_; }
  std::int64_t memberCount() const noexcept { return members_; }
  std::uint64_t totalSize() const noexcept { return total_; }

 private:
  /// Fields that a header of ours may have without a flag.
  struct Layout {
    bool extra;
    bool comment;
  };

  enum class Trial : std::uint8_t {
    Fails,
    Inflates,  ///< as far as the trial went
    Whole,     ///< to the end, with the right checksum
  };

  bool readMember(DataSink& out);
  bool readHeader(GzipHeader& header);
  bool readFlaggedFields(GzipHeader& header);
  bool readUnflaggedFields(GzipHeader& header, bool& found);
  static bool readFields(ByteSpan bytes, const Layout& layout, GzipHeader& header,
                         std::size_t& size);
  Trial tryToInflate(ByteSpan bytes, bool sourceEnds);
  bool takeBytes(std::size_t count, std::uint8_t* to);
  bool takeText(std::string& text);
  bool takeExtra(DataBuffer& extra);
  void take(std::size_t count);
  bool checkHeaderCrc();
  bool inflateTo(DataSink& out);
  bool checkTrailer(std::uint32_t crc, std::uint64_t size);
  bool atAnotherMember(bool& another);
  bool report(std::int64_t bytes);
  bool fail(const char* sentence);

  LookAhead input_;
  PrefixedLog sentences_;
  LogBase& log_;
  ProgressMonitor* progress_;
  std::uint64_t maxSize_ = 0;
  bool logHeaders_ = false;
  bool trace_ = false;

  InflateState2 inflate_;
  ZipCRC crc_;
  std::vector<std::uint8_t> block_;
  GzipHeader firstHeader_;
  std::int64_t headers_ = 0;
  std::int64_t members_ = 0;
  std::uint64_t total_ = 0;
};

}  // namespace zantrel

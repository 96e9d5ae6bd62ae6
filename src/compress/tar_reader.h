#pragma once

#include <cstdint>
#include <string>

#include "compress/tar_header.h"
#include "core/data_buffer.h"
#include "core/data_sink.h"

namespace zantrel {

/// What a TarReader finds. An answer of false, which must have been logged, ends the reading.
class TarEntrySink {
 public:
  virtual ~TarEntrySink() = default;
  virtual bool beginEntry(const TarEntry& entry) = 0;
  /// Some of the entry's data, in order.
  virtual bool entryData(ByteSpan bytes) = 0;
  virtual bool endEntry() = 0;
};

/// Takes a tar archive in pieces of any size and tells its entries to a sink. Long names and
/// extended headers are resolved; their lengths are bounded, so that memory is.
class TarReader final : public DataSink {
 public:
  explicit TarReader(TarEntrySink& entries) noexcept : entries_(entries) {}

  /// Says that the archive has ended; false, and logged, when it ended within an entry.
  bool finish(LogBase& log);

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override;

 private:
  enum class State : std::uint8_t { Header, SparseMap, Meta, Data, Padding, End };

  bool takeBlock(ByteSpan block, LogBase& log);
  bool takeHeader(ByteSpan block, LogBase& log);
  bool startData(LogBase& log);
  std::size_t takeData(ByteSpan bytes, bool& ok, LogBase& log);
  bool endData(LogBase& log);
  bool takeMeta(LogBase& log);
  bool isMeta() const noexcept;

  TarEntrySink& entries_;
  State state_ = State::Header;
  DataBuffer block_;  ///< the part of a block that is there
  TarEntry entry_;
  std::uint64_t left_ = 0;  ///< bytes of data or padding still to come
  DataBuffer meta_;         ///< a long name or an extended header
  PaxValues pax_;           ///< for the next entry
  std::uint64_t blockOffset_ = 0;
};

}  // namespace zantrel

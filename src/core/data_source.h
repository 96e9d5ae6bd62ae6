#pragma once
// Where engines take long input from: files and memory, in blocks of the size that they ask for.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/zantrel_object.h"
#include "platform/file.h"

namespace zantrel {

class DataSink;
class LogBase;
class ReadAhead;

class DataSource : public ZantrelObject {
 public:
  /// The next `wanted` bytes; fewer only where the data end, none behind their end. The block is
  /// valid until the next call. False, the reason being logged, when reading failed.
  virtual bool nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) = 0;
  /// Bytes from the start to the end, or -1 where that cannot be told (pipe, device).
  virtual std::int64_t size() const = 0;
  /// Bytes handed out so far.
  std::int64_t position() const noexcept { return position_; }

 protected:
  std::int64_t position_ = 0;
};

/// Reads a file ahead in large pieces; a long one on a second thread.
class FileDataSource final : public DataSource {
 public:
  FileDataSource();
  ~FileDataSource() override;
  FileDataSource(const FileDataSource&) = delete;
  FileDataSource& operator=(const FileDataSource&) = delete;

  /// Opens a file by its UTF-8 path; false, the reason being logged, when that failed.
  bool open(const char* path, LogBase& log);
  bool nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) override;
  std::int64_t size() const override { return file_.isOpen() ? file_.size() : -1; }

 private:
  void startReadAhead(std::size_t wanted);
  bool fill(std::size_t wanted, LogBase& log);
  bool nextFromPieces(std::size_t wanted, ByteSpan& block, LogBase& log);
  bool fetchPiece(LogBase& log);

  InputFile file_;
  std::string path_;
  DataBuffer ahead_;      // read and not yet given up
  std::size_t used_ = 0;  // bytes at its front that were handed out
  bool atEnd_ = false;

  // Long files instead come from a thread, in pieces that hold whole blocks; ahead_ then joins what
  // lies in two pieces.
  std::unique_ptr<ReadAhead> pieces_;
  ByteSpan piece_;  // what is left of the last one
};

/// Reads memory of somebody else, without copying it.
class MemoryDataSource final : public DataSource {
 public:
  explicit MemoryDataSource(ByteSpan bytes) noexcept : bytes_(bytes) {}
  bool nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) override;
  std::int64_t size() const override { return static_cast<std::int64_t>(bytes_.size()); }

 private:
  ByteSpan bytes_;
};

/// Moves all that is left of a source into a sink, without committing it.
bool copyData(DataSource& from, DataSink& to, LogBase& log);

}  // namespace zantrel

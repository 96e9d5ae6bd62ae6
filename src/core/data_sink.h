#pragma once
// Where engines put long output: files, buffers and fixed memory.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/zantrel_object.h"
#include "platform/file.h"

namespace zantrel {

class LogBase;

/// After a failure, which is logged, nothing more is written and every call answers false.
class DataSink : public ZantrelObject {
 public:
  bool write(ByteSpan bytes, LogBase& log);
  bool write(std::string_view text, LogBase& log) { return write(asBytes(text), log); }
  /// Says that all has been written. A file gets its new content only now.
  bool commit(LogBase& log);
  /// Bytes written so far.
  std::int64_t size() const noexcept { return size_; }

 protected:
  virtual bool doWrite(ByteSpan bytes, LogBase& log) = 0;
  virtual bool doCommit(LogBase&) { return true; }
  void restart() noexcept {
    size_ = 0;
    failed_ = false;
  }

 private:
  std::int64_t size_ = 0;
  bool failed_ = false;
};

/// Writes a file, which keeps its old content until commit(); without that the new one is dropped.
class FileDataSink final : public DataSink {
 public:
  /// Starts a file by its UTF-8 path; false, the reason being logged, when that failed.
  bool open(const char* path, LogBase& log);

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override;
  bool doCommit(LogBase& log) override;

 private:
  bool flush(LogBase& log);
  bool writeNow(ByteSpan bytes, LogBase& log);

  OutputFile file_;
  std::string path_;
  DataBuffer pending_;  // small writes on their way
};

/// Appends to a buffer, which it does not own.
class BufferDataSink final : public DataSink {
 public:
  explicit BufferDataSink(DataBuffer& out) noexcept : out_(out) {}

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override;

 private:
  DataBuffer& out_;
};

/// Fills memory of somebody else; writing beyond its end fails and writes nothing of that block.
class MemoryDataSink final : public DataSink {
 public:
  explicit MemoryDataSink(std::span<std::uint8_t> out) noexcept : out_(out) {}

 protected:
  bool doWrite(ByteSpan bytes, LogBase& log) override;

 private:
  std::span<std::uint8_t> out_;
};

}  // namespace zantrel

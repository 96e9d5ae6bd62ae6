#pragma once
// Files by UTF-8 path. On POSIX systems the path's bytes are used as they are; on Windows the file
// is opened through its ANSI name when the path converts exactly, otherwise through its UTF-16
// name. Failures come back as the operating system's error number (0 = none); see error_text.h.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace zantrel {

/// The operating system's own error number: errno, or GetLastError() on Windows. 0 means success.
using OsError = std::uint32_t;

/// A file open for reading. Movable; closes itself.
class InputFile {
 public:
  InputFile() noexcept;
  ~InputFile();
  InputFile(InputFile&&) noexcept;
  InputFile& operator=(InputFile&&) noexcept;

  /// Opens an existing file, pipe or device. A directory is refused.
  OsError open(const std::string& utf8Path);
  void close() noexcept;
  bool isOpen() const noexcept;
  /// Reads up to `capacity` bytes; `got` is 0 at the end of the file.
  OsError read(void* buffer, std::size_t capacity, std::size_t& got);
  /// Size in bytes, or -1 where the file has none (pipe, device).
  std::int64_t size() const noexcept;
  OsError seek(std::int64_t offset) noexcept;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// A file being written. What stood under the path before stays until commit(): the new content is
/// written beside it and renamed over it, keeping its mode and following a symbolic link. Pipes and
/// devices are written directly. Without commit() the new content is discarded. Readers see the old
/// or the new content, whatever becomes of the process. Nothing waits for the disk (deliberate:
/// that takes milliseconds a file): where the machine itself fails soon after commit(), it is up to
/// the file system what is found there.
class OutputFile {
 public:
  OutputFile() noexcept;
  ~OutputFile();  ///< discards what was not committed
  OutputFile(OutputFile&&) noexcept;
  OutputFile& operator=(OutputFile&&) noexcept;

  OsError open(const std::string& utf8Path);
  bool isOpen() const noexcept;
  OsError write(const void* data, std::size_t size);
  /// Makes the written content the file's content. After a failure the old file is still there.
  OsError commit();
  void discard() noexcept;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

bool fileExists(const std::string& utf8Path);
OsError removeFile(const std::string& utf8Path);

}  // namespace zantrel

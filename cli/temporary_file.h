#pragma once
// A file of the command's own for what is too long to hold in memory.

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

namespace zantrel_cli {

/// Lies in the system's folder for temporary files, for this user alone, and is removed at the end.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// Makes it, empty; false when there is no place for it.
  bool create();
  bool exists() const { return !path_.empty(); }
  const std::string& path() const { return path_; }

  bool append(std::span<const std::uint8_t> bytes);
  /// Hands what was appended over to whoever opens the path; false when that failed.
  bool finish();
  bool copyToStandardOutput() const;

 private:
  std::string path_;
  std::FILE* file_ = nullptr;
};

}  // namespace zantrel_cli

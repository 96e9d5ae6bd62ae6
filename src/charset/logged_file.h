#pragma once
// Files whose failures go to the log with the path and the system's own reason.

#include <cstdint>
#include <string>

#include "core/bytes.h"
#include "platform/file.h"

namespace zantrel {

class DataBuffer;
class LogBase;

class LoggedInput final {
 public:
  explicit LoggedInput(LogBase& log) : log_(log) {}

  bool open(const char* utf8Path);
  /// Appends to `out` until it holds `size` bytes or the file ends.
  bool readUpTo(std::uint32_t size, DataBuffer& out);
  /// Bytes of the file, or -1 where it cannot tell.
  std::int64_t size() const noexcept { return file_.size(); }

 private:
  LogBase& log_;
  std::string path_;
  InputFile file_;
};

class LoggedOutput final {
 public:
  explicit LoggedOutput(LogBase& log) : log_(log) {}

  bool open(const char* utf8Path);
  bool write(ByteSpan bytes);
  /// Puts what was written in the place of the old file, which stands untouched until then.
  bool commit();

 private:
  LogBase& log_;
  std::string path_;
  OutputFile file_;
};

}  // namespace zantrel

#include "charset/logged_file.h"

#include "core/data_buffer.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

/// Whether an operation succeeded; logs why not.
bool succeeded(OsError error, const char* failure, const std::string& path, LogBase& log) {
  if (error == 0) return true;
  log.logError(failure);
  log.logData("filePath", path.c_str());
  log.logWindowsError(error);
  return false;
}

}  // namespace

bool LoggedInput::open(const char* utf8Path) {
  path_ = utf8Path;
  return succeeded(file_.open(path_), "Failed to open file.", path_, log_);
}

bool LoggedInput::readUpTo(std::uint32_t size, DataBuffer& out) {
  while (out.getSize() < size) {
    const std::uint32_t wanted = size - out.getSize();
    std::uint8_t* const room = out.prepare(wanted);
    if (room == nullptr) {
      log_.logError("Out of memory while reading the file.");
      return false;
    }
    std::size_t got = 0;
    if (!succeeded(file_.read(room, wanted, got), "Failed to read file.", path_, log_)) {
      return false;
    }
    if (got == 0) break;
    out.commit(got);
  }
  return true;
}

bool LoggedOutput::open(const char* utf8Path) {
  path_ = utf8Path;
  return succeeded(file_.open(path_), "Failed to create file.", path_, log_);
}

bool LoggedOutput::write(ByteSpan bytes) {
  return succeeded(file_.write(bytes.data(), bytes.size()), "Failed to write file.", path_, log_);
}

bool LoggedOutput::commit() {
  return succeeded(file_.commit(), "Failed to complete the file.", path_, log_);
}

}  // namespace zantrel

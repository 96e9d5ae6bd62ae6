// Whole files in and out of a DataBuffer.

#include <algorithm>
#include <limits>
#include <string>

#include "core/data_buffer.h"
#include "core/file_error.h"
#include "core/log_base.h"
#include "platform/file.h"

namespace zantrel {
namespace {

constexpr std::size_t kBlock = 64 * 1024;  // step for files that cannot tell their size
constexpr std::int64_t kMaxSize = std::numeric_limits<std::uint32_t>::max();

/// Appends all that is left of a file. The size only says how much room is taken first, since a
/// file may grow or shrink while it is read.
bool readAll(InputFile& file, const char* path, DataBuffer& out, LogBase& log) {
  constexpr const char* kNoMemory = "Out of memory while reading the file.";
  const std::int64_t size = file.size();
  if (size > kMaxSize) return logFileError(log, "File is too large to be held in memory.", path, 0);
  if (size > 0 && !out.reserve(static_cast<std::size_t>(size)))
    return logFileError(log, kNoMemory, path, 0);
  for (;;) {
    const std::size_t room = out.capacity() - out.getSize();
    std::uint8_t probe = 0;  // finds the end of the file without growing a full buffer
    std::uint8_t* const to = room != 0 ? out.prepare(room) : &probe;
    std::size_t got = 0;
    if (const OsError error = file.read(to, std::max<std::size_t>(room, 1), got); error != 0) {
      return logFileError(log, "Failed to read file.", path, error);
    }
    if (got == 0) return true;
    if (room != 0) {
      out.commit(got);
      continue;
    }
    if (!out.reserve(std::max<std::size_t>(kBlock, out.getSize() / 2)) && !out.reserve(1)) {
      return logFileError(
          log, out.getSize() == kMaxSize ? "File is too large to be held in memory." : kNoMemory,
          path, 0);
    }
    out.appendChar(probe);
  }
}

}  // namespace

bool DataBuffer::loadFileUtf8(const char* path, LogBase& log) {
  clear();
  const char* const name = path != nullptr ? path : "";
  InputFile file;
  if (const OsError error = file.open(name); error != 0) {
    return logFileError(log, "Failed to open file.", name, error);
  }
  if (readAll(file, name, *this, log)) return true;
  clearWithDeallocate();
  return false;
}

bool DataBuffer::saveToFileUtf8(const char* path, LogBase& log) const {
  guard_.check();
  const char* const name = path != nullptr ? path : "";
  OutputFile file;
  if (const OsError error = file.open(name); error != 0) {
    return logFileError(log, "Failed to create file.", name, error);
  }
  if (const OsError error = file.write(data_, size_); error != 0) {
    return logFileError(log, "Failed to write file.", name, error);
  }
  if (const OsError error = file.commit(); error != 0) {
    return logFileError(log, "Failed to complete the file.", name, error);
  }
  return true;
}

}  // namespace zantrel

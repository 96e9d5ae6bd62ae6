#include "core/data_source.h"

#include <algorithm>

#include "core/data_sink.h"
#include "core/file_error.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

constexpr std::size_t kReadAhead = 256 * 1024;

}  // namespace

bool FileDataSource::open(const char* path, LogBase& log) {
  path_ = path != nullptr ? path : "";
  position_ = 0;
  used_ = 0;
  atEnd_ = false;
  ahead_.clear();
  if (const OsError error = file_.open(path_); error != 0) {
    return logFileError(log, "Failed to open file.", path_.c_str(), error);
  }
  return true;
}

/// Reads until at least `wanted` unused bytes are there or the file ends.
bool FileDataSource::fill(std::size_t wanted, LogBase& log) {
  ahead_.removeFront(static_cast<std::uint32_t>(used_));
  used_ = 0;
  while (!atEnd_ && ahead_.getSize() < wanted) {
    const std::size_t room = std::max(wanted, kReadAhead) - ahead_.getSize();
    std::uint8_t* const to = ahead_.prepare(room);
    if (to == nullptr) {
      return logFileError(log, "Out of memory while reading the file.", path_.c_str(), 0);
    }
    std::size_t got = 0;
    if (const OsError error = file_.read(to, room, got); error != 0) {
      return logFileError(log, "Failed to read file.", path_.c_str(), error);
    }
    ahead_.commit(got);
    atEnd_ = got == 0;
  }
  return true;
}

bool FileDataSource::nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) {
  block = {};
  if (ahead_.getSize() - used_ < wanted && !atEnd_ && !fill(wanted, log)) return false;
  block = ahead_.bytes().subspan(used_, std::min<std::size_t>(wanted, ahead_.getSize() - used_));
  used_ += block.size();
  position_ += static_cast<std::int64_t>(block.size());
  return true;
}

bool MemoryDataSource::nextBlock(std::size_t wanted, ByteSpan& block, LogBase&) {
  const auto at = static_cast<std::size_t>(position_);
  block = bytes_.subspan(at, std::min(wanted, bytes_.size() - at));
  position_ += static_cast<std::int64_t>(block.size());
  return true;
}

bool copyData(DataSource& from, DataSink& to, LogBase& log) {
  ByteSpan block;
  do {
    if (!from.nextBlock(kReadAhead, block, log) || !to.write(block, log)) return false;
  } while (!block.empty());
  return true;
}

}  // namespace zantrel

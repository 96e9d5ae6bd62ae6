#include "core/data_source.h"

#include <algorithm>
#include <numeric>

#include "core/data_sink.h"
#include "core/file_error.h"
#include "core/log_base.h"
#include "core/read_ahead.h"

namespace zantrel {
namespace {

constexpr std::size_t kReadAhead = 256 * 1024;

/// From this size on a file is worth a thread, unless blocks are so large that two pieces of them
/// would take much memory.
constexpr std::int64_t kLongFile = 2 * 1024 * 1024;
constexpr std::size_t kLargeBlock = 2 * 1024 * 1024;

}  // namespace

FileDataSource::FileDataSource() = default;
FileDataSource::~FileDataSource() = default;

bool FileDataSource::open(const char* path, LogBase& log) {
  pieces_.reset();
  piece_ = {};
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

/// Without memory or a thread the file is read as short ones are.
void FileDataSource::startReadAhead(std::size_t wanted) {
  // Pieces hold whole blocks and, if that does not make them large, begin at aligned places.
  const std::size_t even = std::lcm(wanted, ReadAhead::kAlignment);
  const std::size_t unit = even <= kReadAhead ? even : wanted;
  pieces_ = std::make_unique<ReadAhead>();
  if (!pieces_->start(file_, (kReadAhead + unit - 1) / unit * unit)) pieces_.reset();
}

bool FileDataSource::fetchPiece(LogBase& log) {
  if (const OsError error = pieces_->next(piece_); error != 0) {
    return logFileError(log, "Failed to read file.", path_.c_str(), error);
  }
  atEnd_ = piece_.empty();
  return true;
}

bool FileDataSource::nextFromPieces(std::size_t wanted, ByteSpan& block, LogBase& log) {
  if (piece_.empty() && !atEnd_ && !fetchPiece(log)) return false;
  if (piece_.size() >= wanted || atEnd_) {
    block = piece_.first(std::min(wanted, piece_.size()));
    piece_ = piece_.subspan(block.size());
    return true;
  }
  ahead_.clear();
  while (!atEnd_ && ahead_.getSize() < wanted) {
    const ByteSpan part = piece_.first(std::min(wanted - ahead_.getSize(), piece_.size()));
    if (!ahead_.append(part)) {
      return logFileError(log, "Out of memory while reading the file.", path_.c_str(), 0);
    }
    piece_ = piece_.subspan(part.size());
    if (piece_.empty() && ahead_.getSize() < wanted && !fetchPiece(log)) return false;
  }
  block = ahead_.bytes();
  return true;
}

bool FileDataSource::nextBlock(std::size_t wanted, ByteSpan& block, LogBase& log) {
  block = {};
  if (position_ == 0 && !pieces_ && wanted > 0 && wanted <= kLargeBlock &&
      file_.size() >= kLongFile) {
    startReadAhead(wanted);
  }
  if (pieces_) {
    if (!nextFromPieces(wanted, block, log)) return false;
    position_ += static_cast<std::int64_t>(block.size());
    return true;
  }
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

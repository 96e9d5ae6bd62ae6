#include "core/data_sink.h"

#include <algorithm>
#include <cstring>

#include "core/file_error.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

constexpr std::size_t kPendingSize = 64 * 1024;

}  // namespace

bool DataSink::write(ByteSpan bytes, LogBase& log) {
  if (failed_ || bytes.empty()) return !failed_;
  failed_ = !doWrite(bytes, log);
  if (!failed_) size_ += static_cast<std::int64_t>(bytes.size());
  return !failed_;
}

bool DataSink::commit(LogBase& log) {
  if (!failed_) failed_ = !doCommit(log);
  return !failed_;
}

bool FileDataSink::open(const char* path, LogBase& log) {
  restart();
  pending_.clear();
  path_ = path != nullptr ? path : "";
  if (const OsError error = file_.open(path_); error != 0) {
    return logFileError(log, "Failed to create file.", path_.c_str(), error);
  }
  return true;
}

bool FileDataSink::writeNow(ByteSpan bytes, LogBase& log) {
  const OsError error = file_.write(bytes.data(), bytes.size());
  return error == 0 || logFileError(log, "Failed to write file.", path_.c_str(), error);
}

bool FileDataSink::flush(LogBase& log) {
  const bool written = pending_.getSize() == 0 || writeNow(pending_.bytes(), log);
  pending_.clear();
  return written;
}

bool FileDataSink::doWrite(ByteSpan bytes, LogBase& log) {
  if (!file_.isOpen()) return logFileError(log, "File is not open.", path_.c_str(), 0);
  if (pending_.getSize() + bytes.size() > kPendingSize && !flush(log)) return false;
  if (bytes.size() >= kPendingSize || !pending_.reserve(kPendingSize - pending_.getSize())) {
    return flush(log) && writeNow(bytes, log);
  }
  return pending_.append(bytes);
}

bool FileDataSink::doCommit(LogBase& log) {
  if (!file_.isOpen()) return logFileError(log, "File is not open.", path_.c_str(), 0);
  if (!flush(log)) return false;
  const OsError error = file_.commit();
  return error == 0 || logFileError(log, "Failed to complete the file.", path_.c_str(), error);
}

bool BufferDataSink::doWrite(ByteSpan bytes, LogBase& log) {
  // Growing by half keeps the work linear where the buffer's own small steps would not.
  const bool full = out_.capacity() - out_.getSize() < bytes.size();
  if (full) out_.reserve(std::max<std::size_t>(bytes.size(), out_.getSize() / 2));
  if (out_.reserve(bytes.size())) return out_.append(bytes);
  log.logError("Out of memory.");
  log.logData64("numBytes", std::int64_t{out_.getSize()} + static_cast<std::int64_t>(bytes.size()));
  return false;
}

bool MemoryDataSink::doWrite(ByteSpan bytes, LogBase& log) {
  const auto used = static_cast<std::size_t>(size());
  if (bytes.size() > out_.size() - used) {
    log.logError("Output is too large.");
    log.logData64("capacity", static_cast<std::int64_t>(out_.size()));
    return false;
  }
  std::memcpy(out_.data() + used, bytes.data(), bytes.size());
  return true;
}

}  // namespace zantrel

#include "compress/tar_reader.h"

#include <algorithm>

#include "core/log_base.h"

namespace zantrel {
namespace {

// Far longer than any path; programs write a few hundred bytes.
constexpr std::uint64_t kLongestMeta = 1 << 20;

std::uint64_t paddingOf(std::uint64_t size) {
  return (kTarBlock - size % kTarBlock) % kTarBlock;
}

}  // namespace

bool TarReader::doWrite(ByteSpan bytes, LogBase& log) {
  while (!bytes.empty() && state_ != State::End) {
    if (state_ == State::Data || state_ == State::Meta || state_ == State::Padding) {
      bool ok = true;
      bytes = bytes.subspan(takeData(bytes, ok, log));
      if (!ok) return false;
      continue;
    }
    const std::size_t missing = kTarBlock - block_.getSize();
    const ByteSpan piece = bytes.first(std::min(missing, bytes.size()));
    block_.append(piece);
    bytes = bytes.subspan(piece.size());
    if (block_.getSize() < kTarBlock) return true;
    const bool ok = takeBlock(block_.bytes(), log);
    block_.clear();
    if (!ok) return false;
  }
  return true;
}

bool TarReader::takeBlock(ByteSpan block, LogBase& log) {
  blockOffset_ += kTarBlock;
  if (state_ == State::Header) return takeHeader(block, log);
  return sparseMapContinues(block, false) || startData(log);
}

bool TarReader::isMeta() const noexcept {
  return entry_.type == tartype::kGnuLongLink || entry_.type == tartype::kGnuLongName ||
         entry_.type == tartype::kPaxEntry || entry_.type == tartype::kPaxGlobal;
}

bool TarReader::takeHeader(ByteSpan block, LogBase& log) {
  switch (readTarBlock(block, entry_)) {
    case TarBlockKind::Zero:
      state_ = State::End;
      return true;
    case TarBlockKind::Invalid:
      log.logError("This is not a header of a tar archive.");
      log.logData64("offset", static_cast<std::int64_t>(blockOffset_ - kTarBlock));
      return false;
    case TarBlockKind::Entry:
      break;
  }
  if (entry_.type == tartype::kGnuSparse && sparseMapContinues(block, true)) {
    state_ = State::SparseMap;
    return true;
  }
  return startData(log);
}

bool TarReader::startData(LogBase& log) {
  if (isMeta()) {
    if (entry_.size > kLongestMeta) {
      log.logError("An extended header of the tar archive is too long.");
      log.logData64("size", static_cast<std::int64_t>(entry_.size));
      return false;
    }
    meta_.clear();
    state_ = State::Meta;
  } else {
    pax_.applyTo(entry_);
    pax_ = {};
    state_ = State::Data;
    if (!entries_.beginEntry(entry_)) return false;
  }
  left_ = entry_.size;
  blockOffset_ += entry_.size + paddingOf(entry_.size);
  return left_ != 0 || endData(log);
}

std::size_t TarReader::takeData(ByteSpan bytes, bool& ok, LogBase& log) {
  const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, bytes.size()));
  const ByteSpan piece = bytes.first(count);
  left_ -= count;
  if (state_ == State::Meta) {
    meta_.append(piece);
  } else if (state_ == State::Data) {
    ok = entries_.entryData(piece);
  }
  if (ok && left_ == 0) ok = endData(log);
  return count;
}

/// Goes from data to padding, and from there to the next header.
bool TarReader::endData(LogBase& log) {
  if (state_ != State::Padding) {
    if (!(state_ == State::Meta ? takeMeta(log) : entries_.endEntry())) return false;
    left_ = paddingOf(entry_.size);
    state_ = State::Padding;
  }
  if (left_ == 0) state_ = State::Header;
  return true;
}

bool TarReader::takeMeta(LogBase& log) {
  const std::string_view text = meta_.text();
  switch (entry_.type) {
    case tartype::kGnuLongName:
      pax_.name = text.substr(0, text.find('\0'));
      return true;
    case tartype::kGnuLongLink:
      pax_.linkName = text.substr(0, text.find('\0'));
      return true;
    case tartype::kPaxEntry:
      if (readPaxRecords(text, pax_)) return true;
      log.logError("An extended header of the tar archive is malformed.");
      return false;
    default:  // what holds for all entries names none of them
      return true;
  }
}

bool TarReader::finish(LogBase& log) {
  if (state_ == State::End || (state_ == State::Header && block_.getSize() == 0)) return true;
  log.logError("The tar archive ends within an entry.");
  return false;
}

}  // namespace zantrel

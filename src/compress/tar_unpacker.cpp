#include "compress/tar_unpacker.h"

#include <algorithm>

#include "core/log_base.h"
#include "platform/file_tree.h"

namespace zantrel {
namespace {

// An archive may have any number of odd entries; the log tells of so many.
constexpr std::int64_t kLoggedEntries = 100;

/// The next name of a path, which is shortened by it; names between two "/" may be empty.
std::string_view takeName(std::string_view& path) {
  const std::size_t slash = path.find('/');
  const std::string_view name = path.substr(0, slash);
  path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
  return name;
}

bool isBlank(std::string_view name) {
  return name.empty() || name == ".";
}

/// Whether a link that stands `depth` folders below the target's own leads to something inside.
bool staysInside(std::string_view link, std::ptrdiff_t depth) {
  if (link.empty() || link.starts_with('/')) return false;
  bool down = false;
  while (!link.empty()) {
    const std::string_view name = takeName(link);
    if (isBlank(name)) continue;
    if (name != "..") {
      if (!isPlainFileName(name)) return false;
      down = true;
    } else if (down || --depth < 0) {
      return false;
    }
  }
  return true;
}

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

}  // namespace

TarUnpacker::TarUnpacker(std::string folder, LogBase& log, const char* logPrefix)
    : folder_(std::move(folder)), sentences_(logPrefix, log), log_(log) {
  if (folder_.empty()) folder_ = ".";
  while (folder_.size() > 1 && folder_.ends_with('/')) folder_.pop_back();
}

bool TarUnpacker::makeTarget() {
  // The target and what is above it are the caller's: links there are followed.
  for (std::size_t at = 1; at <= folder_.size(); ++at) {
    if (at < folder_.size() && folder_[at] != '/') continue;
    const std::string part = folder_.substr(0, at);
    const FileKind kind = fileKind(part);
    if (kind != FileKind::None) continue;
    // What stands above may be a drive, or hidden from us; the target itself must come about.
    const OsError error = makeFolder(part);
    if (error != 0 && at == folder_.size()) {
      return refuse("A folder cannot be made.", part, error);
    }
  }
  return true;
}

// Logging

bool TarUnpacker::mayLog() noexcept {
  return ++logged_ <= kLoggedEntries;
}

void TarUnpacker::leaveOut(const char* why, const std::string& name) {
  if (!mayLog()) return;
  sentences_.logInfo(why);
  log_.logData("entry", name.c_str());
}

bool TarUnpacker::refuse(const char* why, std::string_view name, OsError error) {
  ++refused_;
  if (!mayLog()) return false;
  sentences_.logError(why);
  log_.logData("entry", std::string(name).c_str());
  log_.logWindowsError(error);
  return false;
}

// Names and folders

/// Turns an entry's name into a path below the target: plain names with one "/" between them.
bool TarUnpacker::splitName(std::string_view name, std::string& path) {
  if (name.starts_with('/') && !saidAbsolute_) {
    saidAbsolute_ = true;
    leaveOut("A leading slash of names is left out.", std::string(name));
  }
  path.clear();
  for (std::string_view rest = name; !rest.empty();) {
    const std::string_view part = takeName(rest);
    if (isBlank(part)) continue;
    if (!isPlainFileName(part)) {
      return refuse("An entry whose name leads elsewhere is refused.", name);
    }
    if (!path.empty()) path += '/';
    path += part;
  }
  return true;
}

bool TarUnpacker::makeRealFolder(const std::string& path) {
  const std::string full = inTarget(path);
  switch (fileKind(full)) {
    case FileKind::Folder:
      return true;
    case FileKind::None:
      break;
    default:
      return refuse("Something that is no folder stands in the way.", path);
  }
  const OsError error = makeFolder(full);
  return error == 0 || refuse("A folder cannot be made.", path, error);
}

bool TarUnpacker::makeParents(const std::string& path) {
  const std::string parent = parentOf(path);
  if (parent == parent_) return true;
  for (std::size_t slash = path.find('/'); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (!makeRealFolder(path.substr(0, slash))) return false;
  }
  parent_ = parent;
  return true;
}

bool TarUnpacker::hasRealParents(const std::string& path) const {
  for (std::size_t slash = path.find('/'); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (fileKind(inTarget(path.substr(0, slash))) != FileKind::Folder) return false;
  }
  return true;
}

/// Removes a link, device or pipe under the path, which would be written through. A file stays
/// until its new content is complete.
bool TarUnpacker::makeRoom(const std::string& path) {
  const std::string full = inTarget(path);
  const FileKind kind = fileKind(full);
  if (kind == FileKind::None || kind == FileKind::File) return true;
  if (kind == FileKind::Folder) return refuse("A folder stands in the way.", path);
  const OsError error = removeFile(full);
  return error == 0 || refuse("What stands in the way cannot be removed.", path, error);
}

// Entries

bool TarUnpacker::beginEntry(const TarEntry& entry) {
  ++entries_;
  filePath_.clear();
  const bool link = entry.type == tartype::kHardLink || entry.type == tartype::kSymbolicLink;
  if (entry.sparse) {
    leaveOut("A sparse file is left out.", entry.name);
    return true;
  }
  if (!entry.isFile() && !entry.isFolder() && !link) {
    leaveOut("An entry that is neither file, folder nor link is left out.", entry.name);
    return true;
  }
  std::string path;
  if (!splitName(entry.name, path) || !makeParents(path)) return true;
  if (entry.isFolder()) {
    unpackFolder(entry, path);
  } else if (path.empty()) {
    refuse("An entry whose name leads elsewhere is refused.", entry.name);
  } else if (entry.type == tartype::kSymbolicLink) {
    unpackSymbolicLink(entry, path);
  } else if (entry.type == tartype::kHardLink) {
    unpackHardLink(entry, path);
  } else if (makeRoom(path)) {
    if (file_.open(inTarget(path).c_str(), log_)) {
      filePath_ = inTarget(path);
      fileAttributes_ = {entry.mode, entry.modified};
    } else {
      refuse("A file cannot be made.", path);
    }
  }
  return true;
}

void TarUnpacker::unpackFolder(const TarEntry& entry, const std::string& path) {
  if (path.empty() || !makeRealFolder(path)) return;  // the target itself stays as it is
  folders_[path] = {entry.mode, entry.modified};
}

void TarUnpacker::unpackSymbolicLink(const TarEntry& entry, const std::string& path) {
  if (!staysInside(entry.linkName, std::count(path.begin(), path.end(), '/'))) {
    refuse("A link that may lead outside the folder is refused.", path);
    return;
  }
  if (!makeRoom(path)) return;
  const std::string full = inTarget(path);
  if (fileKind(full) == FileKind::File) removeFile(full);
  const OsError error = makeSymbolicLink(entry.linkName, full);
  if (error != 0) refuse("A symbolic link cannot be made.", path, error);
}

void TarUnpacker::unpackHardLink(const TarEntry& entry, const std::string& path) {
  std::string existing;
  if (!splitName(entry.linkName, existing)) return;
  if (!hasRealParents(existing) || fileKind(inTarget(existing)) != FileKind::File) {
    refuse("A hard link is to something that is not there.", path);
    return;
  }
  if (existing == path || !makeRoom(path)) return;
  const std::string full = inTarget(path);
  if (fileKind(full) == FileKind::File) removeFile(full);
  const OsError error = makeHardLink(inTarget(existing), full);
  if (error != 0) refuse("A hard link cannot be made.", path, error);
}

bool TarUnpacker::entryData(ByteSpan bytes) {
  return filePath_.empty() || file_.write(bytes, log_);
}

bool TarUnpacker::endEntry() {
  if (filePath_.empty()) return true;
  if (!file_.commit(log_)) return false;
  // Rights come last: a file that may not be written has no time to set on every system.
  setFileTime(filePath_, fileAttributes_.modified);
  setFileMode(filePath_, fileAttributes_.mode);
  filePath_.clear();
  return true;
}

bool TarUnpacker::finish() {
  // From the innermost outwards, since a folder that may not be entered hides those in it.
  for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
    const std::string full = inTarget(folder->first);
    setFileTime(full, folder->second.modified);
    setFileMode(full, folder->second.mode);
  }
  folders_.clear();
  if (refused_ == 0) return true;
  sentences_.logError("Some entries were not unpacked.");
  log_.logData64("numRefused", refused_);
  return false;
}

}  // namespace zantrel

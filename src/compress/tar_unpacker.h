#pragma once
// Writes the entries of a tar archive under a folder, and never anywhere else.
//
// Names are split at "/", a leading "/" is left out, and a name with ".." in it is refused. Every
// folder on the way to an entry must be a real one: nothing is written through a symbolic link,
// whoever made it. A symbolic link is made when its target is relative and has ".." only at its
// start, no more often than leads to the folder unpacked to. Since the way up then consists of real
// folders, and what follows of names and of links made by the same rule, no chain of links from the
// archive leads outside. Hard links go to files that are there already. Devices and pipes are left
// out.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "compress/prefixed_log.h"
#include "compress/tar_reader.h"
#include "platform/file.h"

namespace zantrel {

class TarUnpacker final : public TarEntrySink {
 public:
  TarUnpacker(std::string folder, LogBase& log, const char* logPrefix = "");

  /// Makes the folder to unpack to, with those above it.
  bool makeTarget();

  bool beginEntry(const TarEntry& entry) override;
  bool entryData(ByteSpan bytes) override;
  bool endEntry() override;

  /// Gives folders their times and rights, which had to wait. False, and logged, when some entries
  /// could not be unpacked.
  bool finish();

  std::int64_t entryCount() const noexcept { return entries_; }

 private:
  struct Attributes {
    unsigned mode;
    std::int64_t modified;
  };

  bool splitName(std::string_view name, std::string& path);
  bool makeParents(const std::string& path);
  bool makeRealFolder(const std::string& path);
  bool makeRoom(const std::string& path);
  void unpackFolder(const TarEntry& entry, const std::string& path);
  void unpackSymbolicLink(const TarEntry& entry, const std::string& path);
  void unpackHardLink(const TarEntry& entry, const std::string& path);
  bool hasRealParents(const std::string& path) const;
  std::string inTarget(std::string_view path) const { return folder_ + "/" + std::string(path); }
  bool mayLog() noexcept;
  void leaveOut(const char* why, const std::string& name);
  bool refuse(const char* why, std::string_view name, OsError error = 0);

  std::string folder_;
  PrefixedLog sentences_;
  LogBase& log_;
  FileDataSink file_;
  std::string filePath_;  ///< of the file being written; empty when there is none
  Attributes fileAttributes_{};
  std::string parent_;  ///< the folder found to be real most recently, below the target
  std::map<std::string, Attributes> folders_;
  bool saidAbsolute_ = false;
  std::int64_t entries_ = 0;
  std::int64_t refused_ = 0;
  std::int64_t logged_ = 0;
};

}  // namespace zantrel

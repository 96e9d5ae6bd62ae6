// The parts that the standard library does the same on every platform.

#include "platform/file_tree.h"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace zantrel {
namespace {

namespace fs = std::filesystem;

fs::path pathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

// The standard library converts paths on Windows and throws for what is not UTF-8.
template <class Work>
OsError guarded(const std::string& utf8Path, const Work& work) {
  const auto invalid =
      static_cast<OsError>(std::make_error_code(std::errc::invalid_argument).value());
  if (utf8Path.empty() || utf8Path.find('\0') != std::string::npos) return invalid;
  try {
    std::error_code error;
    work(error);
    return static_cast<OsError>(error.value());
  } catch (const std::system_error& error) {
    return error.code().value() != 0 ? static_cast<OsError>(error.code().value()) : invalid;
  }
}

FileKind kindOf(fs::file_type type) {
  switch (type) {
    case fs::file_type::none:
    case fs::file_type::not_found:
      return FileKind::None;
    case fs::file_type::regular:
      return FileKind::File;
    case fs::file_type::directory:
      return FileKind::Folder;
    case fs::file_type::symlink:
      return FileKind::Link;
    default:
      return FileKind::Other;
  }
}

}  // namespace

FileKind fileKind(const std::string& utf8Path) {
  FileKind kind = FileKind::None;
  guarded(utf8Path, [&](std::error_code& error) {
    kind = kindOf(fs::symlink_status(pathOf(utf8Path), error).type());
  });
  return kind;
}

OsError makeFolder(const std::string& utf8Path) {
  return guarded(utf8Path,
                 [&](std::error_code& error) { fs::create_directory(pathOf(utf8Path), error); });
}

OsError makeSymbolicLink(const std::string& target, const std::string& utf8Path) {
  return guarded(utf8Path, [&](std::error_code& error) {
    fs::create_symlink(pathOf(target), pathOf(utf8Path), error);
  });
}

OsError makeHardLink(const std::string& utf8Existing, const std::string& utf8Path) {
  return guarded(utf8Path, [&](std::error_code& error) {
    fs::create_hard_link(pathOf(utf8Existing), pathOf(utf8Path), error);
  });
}

OsError fileTime(const std::string& utf8Path, std::int64_t& seconds) {
  return guarded(utf8Path, [&](std::error_code& error) {
    const fs::file_time_type time = fs::last_write_time(pathOf(utf8Path), error);
    if (error) return;
    const auto since1970 = fs::file_time_type::clock::to_sys(time).time_since_epoch();
    seconds = std::chrono::floor<std::chrono::seconds>(since1970).count();
  });
}

OsError setFileTime(const std::string& utf8Path, std::int64_t seconds) {
  // The clock of files counts nanoseconds from another year: what it cannot hold is refused.
  constexpr std::int64_t kFurthest = std::int64_t{1} << 32;
  if (seconds < -kFurthest || seconds > kFurthest) {
    return static_cast<OsError>(std::make_error_code(std::errc::invalid_argument).value());
  }
  return guarded(utf8Path, [&](std::error_code& error) {
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    fs::last_write_time(pathOf(utf8Path), fs::file_time_type::clock::from_sys(time), error);
  });
}

}  // namespace zantrel

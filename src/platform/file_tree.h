#pragma once
// Folders, links, times and modes of files: what unpacking an archive needs. Paths are UTF-8; see
// file.h. Failures come back as the operating system's error number (0 = none).

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace zantrel {

enum class FileKind : std::uint8_t { None, File, Folder, Link, Other };

/// What stands under a path. The last name of the path is not followed when it is a symbolic link.
FileKind fileKind(const std::string& utf8Path);

/// Makes one folder, whose parent must exist.
OsError makeFolder(const std::string& utf8Path);
/// Makes a symbolic link; `target` is stored as it is.
OsError makeSymbolicLink(const std::string& target, const std::string& utf8Path);
/// Gives a file a second name.
OsError makeHardLink(const std::string& utf8Existing, const std::string& utf8Path);

/// Time of the last change of a file's content, in seconds since 1970-01-01 UTC.
OsError fileTime(const std::string& utf8Path, std::int64_t& seconds);
/// On Windows folders keep their times, and there are none before 1970.
OsError setFileTime(const std::string& utf8Path, std::int64_t seconds);
/// Sets permissions by the nine bits of POSIX, less what the process withholds from new files. On
/// Windows only the owner's right to write counts.
OsError setFileMode(const std::string& utf8Path, unsigned mode);

/// Whether a name can be that of an ordinary file here, so that a path made of such names and "/"
/// means what it seems to: no device, drive or stream, and no other separator.
bool isPlainFileName(std::string_view name);

}  // namespace zantrel

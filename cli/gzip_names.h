#pragma once
// How gzip names what it writes.

#include <string>

namespace zantrel_cli {

/// Whether a file's name says that it is compressed: it ends with `suffix` or with one of gzip's.
bool hasGzipSuffix(const std::string& path, const std::string& suffix);

/// The path without the suffix (".tgz" and ".taz" become ".tar"); empty when it has none, or when
/// nothing would be left.
std::string withoutGzipSuffix(const std::string& path, const std::string& suffix);

/// The last name of a path that may come from elsewhere; empty when it is none.
std::string lastName(const std::string& path);

}  // namespace zantrel_cli

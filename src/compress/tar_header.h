#pragma once
// The blocks of a tar archive: POSIX.1-1988 (ustar) and what came before it, the extended headers
// of POSIX.1-2001 (pax), and the long names and large numbers of GNU tar.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/bytes.h"

namespace zantrel {

inline constexpr std::size_t kTarBlock = 512;

/// Types of entries, as they stand in the header.
namespace tartype {
inline constexpr char kFile = '0';
inline constexpr char kOldFile = '\0';
inline constexpr char kHardLink = '1';
inline constexpr char kSymbolicLink = '2';
inline constexpr char kFolder = '5';
inline constexpr char kContiguousFile = '7';
inline constexpr char kGnuFolder = 'D';
inline constexpr char kGnuLongLink = 'K';
inline constexpr char kGnuLongName = 'L';
inline constexpr char kGnuSparse = 'S';
inline constexpr char kPaxEntry = 'x';
inline constexpr char kPaxGlobal = 'g';
}  // namespace tartype

struct TarEntry {
  std::string name;
  std::string linkName;
  char type = tartype::kFile;
  std::uint64_t size = 0;  ///< bytes of data that follow
  unsigned mode = 0;
  std::int64_t modified = 0;  ///< seconds since 1970-01-01 UTC
  bool sparse = false;        ///< the data are not the file's content as it is

  /// Whether the data that follow are a file's content.
  bool isFile() const noexcept;
  bool isFolder() const noexcept;
};

enum class TarBlockKind : std::uint8_t { Entry, Zero, Invalid };

/// Reads one block of kTarBlock bytes. Invalid: the checksum or a number is wrong.
TarBlockKind readTarBlock(ByteSpan block, TarEntry& entry);

/// Whether an old GNU sparse header, or a block that continues it, is continued by the next block.
bool sparseMapContinues(ByteSpan block, bool isHeader) noexcept;

/// Values of extended headers, which replace those of the entry that they stand before.
struct PaxValues {
  std::string name;
  std::string linkName;
  bool hasSize = false;
  std::uint64_t size = 0;
  bool hasModified = false;
  std::int64_t modified = 0;
  bool sparse = false;

  void applyTo(TarEntry& entry) const;
};

/// Reads the records "LENGTH KEY=VALUE\n" of an extended header; false when they are malformed.
bool readPaxRecords(std::string_view records, PaxValues& values);

}  // namespace zantrel

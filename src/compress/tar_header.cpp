#include "compress/tar_header.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace zantrel {
namespace {

struct Field {
  std::size_t offset;
  std::size_t size;
};

constexpr Field kName{0, 100};
constexpr Field kMode{100, 8};
constexpr Field kSize{124, 12};
constexpr Field kModified{136, 12};
constexpr Field kChecksum{148, 8};
constexpr std::size_t kTypeOffset = 156;
constexpr Field kLinkName{157, 100};
constexpr Field kMagic{257, 6};
constexpr Field kPrefix{345, 155};
constexpr std::size_t kGnuExtendedOffset = 482;      // in a sparse header
constexpr std::size_t kGnuContinuationOffset = 504;  // in a block that continues its map

std::string_view fieldOf(ByteSpan block, Field field) {
  return asText(block.subspan(field.offset, field.size));
}

std::string textOf(ByteSpan block, Field field) {
  const std::string_view text = fieldOf(block, field);
  return std::string(text.substr(0, text.find('\0')));
}

/// A number in octal digits or, with the highest bit set, in binary with the highest byte first.
bool numberOf(ByteSpan block, Field field, std::int64_t& value) {
  const ByteSpan bytes = block.subspan(field.offset, field.size);
  std::uint64_t number = 0;
  if ((bytes[0] & 0x80) != 0) {
    const bool negative = (bytes[0] & 0x40) != 0;
    number = negative ? ~std::uint64_t{0} : 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const std::uint8_t top = static_cast<std::uint8_t>(number >> 56);
      if (top != (negative ? 0xFF : 0)) return false;
      number = number << 8 | (i == 0 ? bytes[0] & (negative ? 0xFF : 0x7F) : bytes[i]);
    }
    value = static_cast<std::int64_t>(number);
    return (value < 0) == negative;
  }
  std::string_view digits = asText(bytes);
  digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
  digits = digits.substr(0, digits.find_first_of(std::string_view(" \0", 2)));
  for (const char digit : digits) {
    if (digit < '0' || digit > '7') return false;
    number = number << 3 | static_cast<std::uint64_t>(digit - '0');
  }
  value = static_cast<std::int64_t>(number);  // twelve digits at most
  return true;
}

/// The sum of all bytes, those of the checksum itself counted as blanks. Old programs summed signed
/// bytes.
bool checksumHolds(ByteSpan block) {
  std::int64_t stored = 0;
  if (!numberOf(block, kChecksum, stored)) return false;
  std::int64_t sum = 0, signedSum = 0;
  for (std::size_t i = 0; i < kTarBlock; ++i) {
    const bool own = i >= kChecksum.offset && i < kChecksum.offset + kChecksum.size;
    const std::uint8_t byte = own ? std::uint8_t{' '} : block[i];
    sum += byte;
    signedSum += static_cast<std::int8_t>(byte);
  }
  return stored == sum || stored == signedSum;
}

/// Types without data, whatever the size field says: links, devices, folders, pipes.
bool isWithoutData(char type) {
  return type >= tartype::kHardLink && type <= '6';
}

}  // namespace

bool TarEntry::isFile() const noexcept {
  const bool file =
      type == tartype::kFile || type == tartype::kOldFile || type == tartype::kContiguousFile;
  return file && !name.ends_with('/');
}

bool TarEntry::isFolder() const noexcept {
  if (type == tartype::kFolder || type == tartype::kGnuFolder) return true;
  return (type == tartype::kFile || type == tartype::kOldFile) && name.ends_with('/');
}

TarBlockKind readTarBlock(ByteSpan block, TarEntry& entry) {
  if (std::all_of(block.begin(), block.end(), [](std::uint8_t byte) { return byte == 0; })) {
    return TarBlockKind::Zero;
  }
  entry = {};
  std::int64_t size = 0, mode = 0;
  if (!checksumHolds(block) || !numberOf(block, kSize, size) || size < 0 ||
      !numberOf(block, kMode, mode) || !numberOf(block, kModified, entry.modified)) {
    return TarBlockKind::Invalid;
  }
  entry.type = static_cast<char>(block[kTypeOffset]);
  entry.size = isWithoutData(entry.type) ? 0 : static_cast<std::uint64_t>(size);
  entry.mode = static_cast<unsigned>(mode & 07777);
  entry.name = textOf(block, kName);
  entry.linkName = textOf(block, kLinkName);
  entry.sparse = entry.type == tartype::kGnuSparse;
  // GNU tar has a blank where the magic of ustar ends, and no prefix.
  if (fieldOf(block, kMagic) == std::string_view("ustar\0", 6)) {
    const std::string prefix = textOf(block, kPrefix);
    if (!prefix.empty()) entry.name = prefix + "/" + entry.name;
  }
  return TarBlockKind::Entry;
}

bool sparseMapContinues(ByteSpan block, bool isHeader) noexcept {
  return block[isHeader ? kGnuExtendedOffset : kGnuContinuationOffset] != 0;
}

void PaxValues::applyTo(TarEntry& entry) const {
  if (!name.empty()) entry.name = name;
  if (!linkName.empty()) entry.linkName = linkName;
  if (hasSize && !isWithoutData(entry.type)) entry.size = size;
  if (hasModified) entry.modified = modified;
  entry.sparse = entry.sparse || sparse;
}

bool readPaxRecords(std::string_view records, PaxValues& values) {
  while (!records.empty()) {
    std::size_t length = 0;
    const auto [end, error] =
        std::from_chars(records.data(), records.data() + records.size(), length);
    const auto digits = static_cast<std::size_t>(end - records.data());
    if (error != std::errc() || length > records.size() || length < digits + 3 ||
        records[digits] != ' ' || records[length - 1] != '\n') {
      return false;
    }
    const std::string_view record = records.substr(digits + 1, length - digits - 2);
    records.remove_prefix(length);
    const std::size_t equals = record.find('=');
    if (equals == std::string_view::npos) return false;
    const std::string_view key = record.substr(0, equals);
    const std::string_view value = record.substr(equals + 1);
    const auto number = [&](auto& to) {  // the fraction of a second is left out
      return std::from_chars(value.data(), value.data() + value.size(), to).ec == std::errc();
    };
    if (key == "path") values.name = value;
    if (key == "linkpath") values.linkName = value;
    if (key == "size" && !(values.hasSize = number(values.size))) return false;
    if (key == "mtime") values.hasModified = number(values.modified);
    if (key.starts_with("GNU.sparse.")) values.sparse = true;
  }
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return values.size <= kMost;
}

}  // namespace zantrel

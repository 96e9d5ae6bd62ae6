#include "compress/gzip_header.h"

#include <string_view>

#include "compress/prefixed_log.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

std::string_view untilZero(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

bool appendWithZero(std::string_view text, DataBuffer& out) {
  const std::string_view field = untilZero(text);
  return field.empty() || (out.append(field) && out.appendChar(0));
}

}  // namespace

bool writeGzipHeader(const GzipHeader& header, DataBuffer& out, LogBase& log) {
  if (header.extra.getSize() > gzip::kLargestExtra) {
    log.logError("The extra data of a gzip header may have 65535 bytes at most.");
    log.logDataLong("extraDataSize", static_cast<std::int32_t>(header.extra.getSize()));
    return false;
  }
  const auto byteOf = [](std::uint32_t value, int shift) {
    return static_cast<std::uint8_t>(value >> shift);
  };
  const std::uint32_t time = header.modified;
  const std::uint8_t fixed[gzip::kFixedHeaderBytes] = {
      gzip::kId1,
      gzip::kId2,
      gzip::kDeflateMethod,
      untilZero(header.name).empty() ? std::uint8_t{0} : gzip::kName,
      byteOf(time, 0),
      byteOf(time, 8),
      byteOf(time, 16),
      byteOf(time, 24),
      0,
      gzip::kOwnSystem};
  bool stored = out.append(ByteSpan(fixed));
  if (const std::uint32_t size = header.extra.getSize(); size != 0) {
    const std::uint8_t length[] = {byteOf(size, 0), byteOf(size, 8)};
    stored = stored && out.append(ByteSpan(length)) && out.append(header.extra);
  }
  stored = stored && appendWithZero(header.name, out) && appendWithZero(header.comment, out);
  if (!stored) log.logError("Out of memory.");
  return stored;
}

bool readGzipFixedHeader(ByteSpan bytes, GzipHeader& header, PrefixedLog& log) {
  if (bytes.size() < gzip::kFixedHeaderBytes) {
    log.logError("Failed to get gzip signature");
    return false;
  }
  if (bytes[0] != gzip::kId1 || bytes[1] != gzip::kId2) {
    log.logError("Invalid GZip ID");
    return false;
  }
  if (bytes[2] != gzip::kDeflateMethod) {
    log.logError("Invalid GZip compression method");
    return false;
  }
  header = {};
  header.flags = bytes[3];
  header.modified = gzip::read32(bytes.data() + 4);
  header.extraFlags = bytes[8];
  header.system = bytes[9];
  if ((header.flags & gzip::kReserved) != 0) {
    log.logError("The gzip header has flags that no version of the format knows.");
    log.plain().logHex("flags", header.flags);
    return false;
  }
  return true;
}

void logGzipHeader(const GzipHeader& header, LogBase& log) {
  const LogContext context(log, "gzipHeader");
  log.logHex("flags", header.flags);
  log.logData64("modified", header.modified);
  log.logDataLong("extraFlags", header.extraFlags);
  log.logDataLong("operatingSystem", header.system);
  if (header.extra.getSize() != 0) {
    log.logDataLong("extraDataSize", static_cast<std::int32_t>(header.extra.getSize()));
  }
  if (!header.name.empty()) log.logData("filename", header.name.c_str());
  if (!header.comment.empty()) log.logData("comment", header.comment.c_str());
}

}  // namespace zantrel

#pragma once
// CRC-32 as zip, gzip and PNG use it: the polynomial 0x04C11DB7 of ISO 3309 and ITU-T V.42, bits
// reflected, all ones before and inverted after.

#include <cstdint>

#include "core/bytes.h"
#include "core/zantrel_object.h"

namespace zantrel {

class LogBase;
class ProgressMonitor;

/// Over bytes in one piece, in many, or in a file. May be used again after endStream().
class ZipCRC final : public ZantrelObject {
 public:
  void beginStream() noexcept { crc_ = 0; }
  void moreData(ByteSpan bytes) noexcept { crc_ = extend(crc_, bytes); }
  /// The checksum of all data since beginStream().
  std::uint32_t endStream() const noexcept { return crc_; }

  static std::uint32_t getCRC(ByteSpan bytes) noexcept { return extend(0, bytes); }
  /// The checksum of a whole file by its UTF-8 path. The monitor, which may be null, counts bytes;
  /// false, the reason being logged, when reading failed or it asked to stop.
  static bool fileCRC(const char* path, std::uint32_t& crc, LogBase& log,
                      ProgressMonitor* progress);

  /// The checksum of some data followed by `bytes`, given that of the data (0 for none).
  static std::uint32_t extend(std::uint32_t crc, ByteSpan bytes) noexcept;

 private:
  std::uint32_t crc_ = 0;
};

}  // namespace zantrel

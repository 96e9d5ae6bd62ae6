#include "compress/zip_crc.h"

#include <array>
#include <bit>

#include "compress/zip_crc_kernels.h"
#include "core/byte_order.h"
#include "core/data_source.h"
#include "core/log_base.h"
#include "frame/progress_monitor.h"

namespace zantrel {

namespace crc32 {

namespace {

// Row n: what a byte does to the register when n bytes more come behind it.
constexpr std::size_t kRows = 16;
using Table = std::array<std::array<std::uint32_t, 256>, kRows>;

constexpr Table makeTable() {
  Table table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit)
      crc = (crc >> 1) ^ ((crc & 1) != 0 ? kReflectedPolynomial : 0);
    table[0][byte] = crc;
  }
  for (std::size_t row = 1; row < kRows; ++row) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = table[row - 1][byte];
      table[row][byte] = (before >> 8) ^ table[0][before & 0xFF];
    }
  }
  return table;
}

constexpr Table kTable = makeTable();

// The share of four bytes behind which `behind` more come.
std::uint32_t share(std::uint32_t word, std::size_t behind) noexcept {
  return kTable[behind + 3][word & 0xFF] ^ kTable[behind + 2][(word >> 8) & 0xFF] ^
         kTable[behind + 1][(word >> 16) & 0xFF] ^ kTable[behind][word >> 24];
}

std::uint32_t wordAt(const std::uint8_t* bytes) noexcept {
  return loadWord<std::uint32_t, std::endian::little>(bytes);
}

}  // namespace

std::uint32_t portable(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) noexcept {
  for (; count >= 16; count -= 16, bytes += 16) {
    crc = share(crc ^ wordAt(bytes), 12) ^ share(wordAt(bytes + 4), 8) ^
          share(wordAt(bytes + 8), 4) ^ share(wordAt(bytes + 12), 0);
  }
  for (; count >= 4; count -= 4, bytes += 4) crc = share(crc ^ wordAt(bytes), 0);
  for (; count > 0; --count, ++bytes) crc = (crc >> 8) ^ kTable[0][(crc ^ *bytes) & 0xFF];
  return crc;
}

}  // namespace crc32

std::uint32_t ZipCRC::extend(std::uint32_t crc, ByteSpan bytes) noexcept {
#if defined(ZT_X86_64)
  if (bytes.size() >= crc32::kLeastFolded) {
    const CpuFeatures& cpu = cpuFeatures();
    if (cpu.vpclmul && cpu.avx512 && cpu.pclmul)
      return ~crc32::vpclmul512(~crc, bytes.data(), bytes.size());
    if (cpu.pclmul && cpu.ssse3) return ~crc32::pclmul(~crc, bytes.data(), bytes.size());
  }
#endif
  return ~crc32::portable(~crc, bytes.data(), bytes.size());
}

bool ZipCRC::fileCRC(const char* path, std::uint32_t& crc, LogBase& log,
                     ProgressMonitor* progress) {
  constexpr std::size_t kSourceBlock = 65536;
  FileDataSource source;
  if (!source.open(path, log)) return false;
  ZipCRC stream;
  for (;;) {
    ByteSpan block;
    if (!source.nextBlock(kSourceBlock, block, log)) return false;
    if (block.empty()) break;
    stream.moreData(block);
    if (progress == nullptr) continue;
    bool abort = false;
    progress->consume(static_cast<std::int64_t>(block.size()), abort);
    if (abort || progress->aborted()) {
      log.logError("Aborted by the application.");
      return false;
    }
  }
  crc = stream.endStream();
  return true;
}

}  // namespace zantrel

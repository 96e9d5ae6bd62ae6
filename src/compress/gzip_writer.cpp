#include "compress/gzip_writer.h"

#include "compress/compression_engine.h"
#include "compress/zip_crc.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"

namespace zantrel {
namespace {

constexpr std::size_t kSourceBlock = 65536;

bool append32(std::uint32_t value, DataBuffer& out) {
  const std::uint8_t bytes[] = {
      static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
      static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
  return out.append(ByteSpan(bytes));
}

bool deflateFailed(LogBase& log) {
  log.logError("Failed to deflate to output");
  return false;
}

}  // namespace

bool writeGzip(const GzipHeader& header, CompressionEngine& deflate, DataSource& source,
               DataSink& sink, LogBase& log, ProgressMonitor* progress) {
  DataBuffer out;
  if (!writeGzipHeader(header, out, log)) return false;
  if (!deflate.beginCompress({}, out, log, progress)) return deflateFailed(log);
  ZipCRC crc;
  crc.beginStream();
  std::uint32_t size = 0;  // the format counts modulo 2^32
  for (;;) {
    ByteSpan block;
    if (!sink.write(out.bytes(), log) || !source.nextBlock(kSourceBlock, block, log)) return false;
    out.clear();
    if (block.empty()) break;
    crc.moreData(block);
    size += static_cast<std::uint32_t>(block.size());
    if (!deflate.moreCompress(block, out, log, progress)) return deflateFailed(log);
  }
  if (!deflate.endCompress(out, log, progress)) return deflateFailed(log);
  return append32(crc.endStream(), out) && append32(size, out) && sink.write(out.bytes(), log);
}

}  // namespace zantrel

// Gzip data: anything may come in, output stays within its limit, what was read once reads the same
// through other blocks, and what we write with any header fields we read back.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "compress/gzip_reader.h"
#include "compress/gzip_writer.h"
#include "compress/xfdl.h"
#include "compress/zantrel_deflate.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_null.h"

namespace {

using namespace zantrel;

constexpr std::uint64_t kMaxSize = 1 << 20;

void require(bool holds) {
  if (!holds) std::abort();
}

bool read(ByteSpan gzip, DataBuffer& out) {
  LogNull log;
  MemoryDataSource source(gzip);
  BufferDataSink sink(out);
  GzipReader reader(source, log, nullptr);
  reader.setMaxDecompressedSize(kMaxSize);
  const bool done = reader.decompress(sink);
  require(out.getSize() <= kMaxSize);
  require(!done || (reader.memberCount() > 0 && reader.totalSize() == out.getSize()));
  return done;
}

/// A piece of the input, which is shortened by it; its first byte tells the length.
ByteSpan takePiece(ByteSpan& in) {
  if (in.empty()) return {};
  const std::size_t size = std::min<std::size_t>(in[0] % 32, in.size() - 1);
  const ByteSpan piece = in.subspan(1, size);
  in = in.subspan(1 + size);
  return piece;
}

void checkRoundTrip(ByteSpan in) {
  GzipHeader header;
  const auto text = [&] {
    std::string piece(asText(takePiece(in)));
    std::replace(piece.begin(), piece.end(), '\0', '0');
    return piece;
  };
  header.name = text();
  header.comment = text();
  // Extra data that hold a whole stream with its checksum are read as one, by the flags: so that no
  // input is such, they are changed.
  for (const std::uint8_t byte : takePiece(in)) header.extra.appendChar(byte ^ 0x5A);
  LogNull log;
  DataBuffer out, back;
  MemoryDataSource source(in);
  BufferDataSink sink(out);
  ZantrelDeflate deflate;
  require(writeGzip(header, deflate, source, sink, log, nullptr));
  require(read(out.bytes(), back));
  require(std::equal(in.begin(), in.end(), back.bytes().begin(), back.bytes().end()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteSpan in(data, size);
  DataBuffer out;
  if (read(in, out)) {
    // The same once more: as two members they give the text twice, as long as both fit.
    DataBuffer twice, both;
    require(twice.append(in) && twice.append(in));
    if (out.getSize() <= kMaxSize / 2) read(twice.bytes(), both);
  }
  checkRoundTrip(in);
  bool isXml = false;
  DataBuffer gzip;
  LogNull log;
  readXfdl(asText(in), isXml, gzip, log);
  return 0;
}

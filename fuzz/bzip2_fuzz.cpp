// bzip2: what one decoder takes another takes too, in pieces of any size, and what is compressed
// comes back. The first byte chooses the size of the pieces, the rest is a stream and a text in
// turn. Checksums would hide everything behind them, so a stream that only they refuse gets the
// right ones.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#ifdef ZANTREL_HAVE_BZIP2
#include <bzlib.h>
#endif

#include "compress/bzip2_engine.h"
#include "compress/bzip2_format.h"
#include "core/log_base.h"

using namespace zantrel;

namespace {

constexpr std::size_t kLimit = 4'000'000;

void check(bool holds) {
  if (!holds) std::abort();
}

// Keeps the checksum that the data should have had, and whether the limit was what stopped them.
class FaultLog final : public LogBase {
 public:
  std::optional<std::uint32_t> crc;
  bool tooLarge = false;

  bool logHex(const char* tag, std::uint32_t value) override {
    if (std::string_view(tag) == "computedCrc") crc = value;
    return true;
  }
  bool logData64(const char*, std::int64_t) override { return tooLarge = true; }
  bool getXml(StringBuffer&) override { return true; }
  bool getHtml(StringBuffer&) override { return true; }
  bool getText(StringBuffer&) override { return true; }
  bool logError(const char*) override { return true; }
  bool logInfo(const char*) override { return true; }
  bool logXml(const char*) override { return true; }
  bool clearLog() override { return true; }
  bool enterContext(const char*, bool) override { return true; }
  bool leaveContext() override { return true; }
  bool logData(const char*, const char*) override { return true; }
  bool logDataLong(const char*, std::int32_t) override { return true; }
  bool logTickCount(const char*) override { return true; }
  bool saveXml(const char*) override { return true; }
};

bool decompress(std::string_view stream, std::size_t piece, std::string& text, FaultLog& log) {
  Bzip2Engine engine;
  engine.setMaxDecompressedSize(kLimit);
  DataBuffer out;
  bool done = engine.beginDecompress({}, out, log, nullptr);
  for (; done && !stream.empty(); stream.remove_prefix(std::min(piece, stream.size())))
    done = engine.moreDecompress(asBytes(stream.substr(0, piece)), out, log, nullptr);
  done = done && engine.endDecompress(out, log, nullptr);
  text = out.text();
  return done;
}

void setBits(std::string& bytes, std::size_t at, unsigned count, std::uint64_t value) {
  for (; count > 0; ++at) {
    const auto bit = static_cast<unsigned char>(0x80 >> at % 8);
    const bool set = (value >> --count & 1) != 0;
    const auto byte = static_cast<unsigned char>(bytes[at / 8]);
    bytes[at / 8] = static_cast<char>(set ? byte | bit : byte & ~bit);
  }
}

// Where the checksum of the last stream stands, in bits; 0 if there is no end.
std::size_t streamCrcAt(std::string_view bytes) {
  std::uint64_t last = 0;
  std::size_t found = 0;
  for (std::size_t at = 0; at < 8 * bytes.size(); ++at) {
    const auto byte = static_cast<unsigned char>(bytes[at / 8]);
    last = (last << 1 | (byte >> (7 - at % 8) & 1)) & 0xFFFF'FFFF'FFFF;
    if (last == bzip2::kEndMark && at + 33 <= 8 * bytes.size()) found = at + 1;
  }
  return found;
}

// Puts in the checksum of the first block or of the last stream.
std::string repaired(std::string stream) {
  std::string text;
  FaultLog first, second;
  decompress(stream, stream.size(), text, first);
  if (first.crc && stream.size() >= 14) setBits(stream, 80, 32, *first.crc);
  decompress(stream, stream.size(), text, second);
  const std::size_t end = streamCrcAt(stream);
  if (second.crc && end > 0) setBits(stream, end, 32, *second.crc);
  return stream;
}

#ifdef ZANTREL_HAVE_BZIP2
bool isHeader(std::string_view bytes) {
  return bytes.size() >= 4 && bytes.starts_with("BZh") && bytes[3] >= '1' && bytes[3] <= '9';
}

// What libbz2 makes of the streams, as its command line does; nothing if it refuses them.
std::optional<std::string> expandedByPeer(std::string stream) {
  std::string text;
  for (bool first = true;; first = false) {
    if (!first && !isHeader(stream)) {
      const bool cutOff = !stream.empty() && stream.size() < 4 &&
                          std::string_view("BZh").starts_with(std::string_view(stream));
      if (cutOff) return std::nullopt;
      return text;
    }
    bz_stream bz{};
    BZ2_bzDecompressInit(&bz, 0, 0);
    bz.next_in = stream.data();
    bz.avail_in = static_cast<unsigned>(stream.size());
    int status = BZ_OK;
    while (status == BZ_OK) {
      char piece[4096];
      bz.next_out = piece;
      bz.avail_out = sizeof piece;
      status = BZ2_bzDecompress(&bz);
      text.append(piece, sizeof piece - bz.avail_out);
      if (status == BZ_OK && bz.avail_in == 0 && bz.avail_out > 0) break;
    }
    stream.erase(0, stream.size() - bz.avail_in);
    BZ2_bzDecompressEnd(&bz);
    if (status != BZ_STREAM_END) return std::nullopt;
  }
}
#endif

void decode(const std::string& stream, std::size_t piece) {
  FaultLog log, again;
  std::string text, inPieces;
  const bool done = decompress(stream, stream.size() + 1, text, log);
  check(decompress(stream, piece, inPieces, again) == done);
  check(inPieces == text);
#ifdef ZANTREL_HAVE_BZIP2
  if (log.tooLarge) return;
  const auto expected = expandedByPeer(stream);
  check(expected.has_value() == done);
  check(!done || *expected == text);
#endif
}

void roundTrip(std::string_view text, std::size_t piece) {
  Bzip2Engine engine;
  FaultLog log;
  DataBuffer packed;
  check(engine.beginCompress({}, packed, log, nullptr));
  for (std::string_view rest = text; !rest.empty();
       rest.remove_prefix(std::min(piece, rest.size())))
    check(engine.moreCompress(asBytes(rest.substr(0, piece)), packed, log, nullptr));
  check(engine.endCompress(packed, log, nullptr));
  std::string back;
  check(decompress(packed.text(), piece, back, log) && back == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::size_t piece = 1U + data[0];
  const std::string rest(asText({data + 1, size - 1}));
  roundTrip(rest, piece);
  decode(rest, piece);
  const std::string right = repaired(rest);
  if (right != rest) decode(right, piece);
  return 0;
}

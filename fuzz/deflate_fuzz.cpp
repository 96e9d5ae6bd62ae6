// Deflate: what was compressed at any level, in pieces of any size, is what one piece gives,
// expands to the input here and, where it is installed, in zlib. The first two bytes choose the
// level and the pieces; the rest is built up to what reaches the window's ends by repeating it.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#ifdef ZANTREL_HAVE_ZLIB
#include <zlib.h>
#endif

#include "compress/zantrel_deflate.h"
#include "core/data_buffer.h"
#include "core/log_null.h"

namespace {

using namespace zantrel;

void check(bool holds) {
  if (!holds) std::abort();
}

std::string whole(ZantrelDeflate& engine, std::string_view text) {
  LogNull log;
  DataBuffer out;
  check(engine.deflateBuffer(asBytes(text), out, log));
  return std::string(out.text());
}

// Pieces of `piece`, 2 * `piece`, 3 * `piece`, ... bytes.
std::string inPieces(ZantrelDeflate& engine, std::string_view text, std::size_t piece) {
  LogNull log;
  DataBuffer out;
  check(engine.beginCompress({}, out, log, nullptr));
  for (std::size_t size = piece; !text.empty(); size += piece) {
    check(engine.moreCompress(asBytes(text.substr(0, size)), out, log, nullptr));
    text.remove_prefix(std::min(size, text.size()));
  }
  check(engine.endCompress(out, log, nullptr));
  return std::string(out.text());
}

#ifdef ZANTREL_HAVE_ZLIB
void checkWithZlib(std::string& stream, std::string_view text) {
  std::string room(text.size() + 1, '\0');
  z_stream z{};
  check(inflateInit2(&z, -15) == Z_OK);
  z.next_in = reinterpret_cast<Bytef*>(stream.data());
  z.avail_in = static_cast<uInt>(stream.size());
  z.next_out = reinterpret_cast<Bytef*>(room.data());
  z.avail_out = static_cast<uInt>(room.size());
  check(::inflate(&z, Z_FINISH) == Z_STREAM_END);
  check(z.avail_in == 0 && z.total_out == text.size() && text == room.substr(0, text.size()));
  inflateEnd(&z);
}
#endif

// Copies of the seed at many distances, with differences, so that few bytes make a long input.
std::string grown(std::string_view seed, std::size_t size) {
  std::string text(seed);
  std::uint32_t state = 1;
  while (!seed.empty() && text.size() < size) {
    state = state * 1664525 + static_cast<std::uint8_t>(seed[state % seed.size()]) + 1;
    const std::size_t from = state % text.size();
    text += text.substr(from, 1 + (state >> 8) % 700);
    if (state >> 30 == 0) text += static_cast<char>(state >> 16);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  static ZantrelDeflate engine;
  engine.setLevel(data[0] % 10);
  const bool longer = data[0] >= 240;
  const std::size_t piece = longer ? 1 + 97 * data[1] : 1 + data[1];
  const std::string_view seed = asText({data + 2, std::min<std::size_t>(size - 2, 1 << 16)});
  const std::string text = longer ? grown(seed, 300000) : std::string(seed);

  std::string stream = whole(engine, text);
  check(inPieces(engine, text, piece) == stream);
  check(stream.size() <= text.size() + text.size() / 1000 + 16);
  LogNull log;
  DataBuffer out;
  check(engine.inflateBuffer(asBytes(stream), out, log) && engine.unusedInput() == 0);
  check(out.text() == text);
#ifdef ZANTREL_HAVE_ZLIB
  checkWithZlib(stream, text);
#endif
  return 0;
}

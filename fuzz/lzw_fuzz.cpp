// LZW: any .Z data are read or refused, the same in pieces of any size, and what is compressed
// comes back. The first byte chooses the size of the pieces, the rest is a stream and a text in
// turn.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "compress/lzw_decoder.h"
#include "compress/lzw_encoder.h"
#include "core/log_null.h"

using namespace zantrel;

namespace {

constexpr std::size_t kLimit = 16'000'000;

void check(bool holds) {
  if (!holds) std::abort();
}

bool decompress(std::string_view stream, std::size_t piece, std::string& text) {
  const auto decoder = std::make_unique<LzwDecoder>();
  LogNull log;
  for (; !stream.empty() && text.size() < kLimit;
       stream.remove_prefix(std::min(piece, stream.size()))) {
    decoder->feed(asBytes(stream.substr(0, piece)));
    LzwDecoder::Status status;
    while ((status = decoder->advance(log)) == LzwDecoder::Status::hasOutput)
      text += asText(decoder->output());
    if (status == LzwDecoder::Status::failed) return false;
  }
  return text.size() >= kLimit || decoder->finish(log);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::size_t piece = 1U + data[0];
  const std::string rest(asText({data + 1, size - 1}));

  std::string text, inPieces;
  const bool done = decompress(rest, rest.size() + 1, text);
  const bool same = decompress(rest, piece, inPieces) == done && inPieces == text;
  check(same || text.size() >= kLimit);

  LzwEncoder encoder;
  for (std::string_view left = rest; !left.empty();
       left.remove_prefix(std::min(piece, left.size())))
    encoder.add(asBytes(left.substr(0, piece)));
  encoder.finish();
  std::string back;
  check(decompress(asText(encoder.output()), piece, back) && back == rest);
  return 0;
}

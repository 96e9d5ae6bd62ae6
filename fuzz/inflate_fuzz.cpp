// Inflate: in one piece as in pieces, portable as on the processor's instructions, and beside zlib
// where it is installed. The first two bytes choose the sizes of the pieces, the rest is the
// stream.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#ifdef ZANTREL_HAVE_ZLIB
#include <zlib.h>
#endif

#include "compress/inflate_state2.h"
#include "platform/cpu_features.h"

using namespace zantrel;

namespace {

using Status = InflateState2::Status;

constexpr std::size_t kHeader = 2;
constexpr std::uint64_t kLimit = 1 << 17;

struct Result {
  Status status;
  std::string output;
  std::size_t left;
};

void check(bool holds) {
  if (!holds) std::abort();
}

Result whole(ByteSpan stream) {
  InflateState2 state;
  DataBuffer out;
  const Status status = state.inflateAll(stream, out, kLimit);
  check(state.totalProduced() == out.getSize());
  check((status == Status::failed) == (state.errorCode() != InflateError::none));
  return {status, std::string(out.text()), stream.size()};
}

Result inPieces(ByteSpan stream, std::size_t inStep, std::size_t outStep) {
  InflateState2 state;
  std::vector<std::uint8_t> room(outStep);
  Result result{Status::more, {}, 0};
  ByteSpan piece;
  while (result.status == Status::more && result.output.size() <= kLimit) {
    if (piece.empty()) {
      if (stream.empty()) inStep = 0;
      piece = stream.first(std::min(inStep, stream.size()));
      stream = stream.subspan(piece.size());
    }
    const std::size_t before = piece.size();
    std::size_t produced = 0;
    result.status = state.run(piece, room, produced);
    result.output.append(reinterpret_cast<const char*>(room.data()), produced);
    if (result.status == Status::more && before == piece.size() && produced == 0) {
      check(stream.empty() && piece.empty());  // nothing but the end of the input stops it
      break;
    }
  }
  result.left = stream.size() + piece.size();
  return result;
}

#ifdef ZANTREL_HAVE_ZLIB
void compareWithZlib(ByteSpan stream, const Result& ours) {
  std::vector<std::uint8_t> room(kLimit + 1);
  z_stream z{};
  check(inflateInit2(&z, -15) == Z_OK);
  z.next_in = const_cast<Bytef*>(stream.data());
  z.avail_in = static_cast<uInt>(stream.size());
  z.next_out = room.data();
  z.avail_out = static_cast<uInt>(room.size());
  const int status = ::inflate(&z, Z_SYNC_FLUSH);
  const std::size_t produced = std::min<std::size_t>(z.total_out, kLimit);
  inflateEnd(&z);
  if (z.total_out > kLimit) {
    check(ours.status == Status::failed);
  } else {
    check((status == Z_STREAM_END) == (ours.status == Status::finished));
    if (status == Z_STREAM_END) check(z.avail_in == ours.left);
  }
  check(ours.output ==
        std::string(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(produced)));
}
#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeader) return 0;
  const ByteSpan stream(data + kHeader, size - kHeader);
  const Result once = whole(stream);
  const Result pieces = inPieces(stream, 1U + data[0], 1U + data[1] * std::size_t{8});
  if (once.output.size() < kLimit) {
    check(pieces.status == once.status);
    check(pieces.output == once.output);
    check(once.status != Status::finished || pieces.left == once.left);
  }
#ifdef ZANTREL_HAVE_ZLIB
  compareWithZlib(stream, once);
#endif
  const ScopedCpuFeatures portable(CpuFeatures{});
  const Result slow = whole(stream);
  check(slow.status == once.status && slow.output == once.output && slow.left == once.left);
  return 0;
}

// Every digest and HMAC: in pieces as in one piece, portable as on the processor's instructions.
// The first bytes choose the algorithm and the sizes of the pieces, the rest is the message.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "crypto/digest_context.h"
#include "crypto/hash.h"
#include "crypto/hmac.h"
#include "platform/cpu_features.h"

using namespace zantrel;

namespace {

constexpr std::size_t kHeader = 4;

std::string whole(int id, int bits, int passes, ByteSpan message) {
  DataBuffer out;
  DigestContext(id, bits, passes).digestData(message, out);
  return std::string(out.text());
}

std::string inPieces(int id, int bits, int passes, ByteSpan message, std::size_t first,
                     std::size_t then) {
  DigestContext digest(id, bits, passes);
  for (std::size_t piece = first; !message.empty(); piece = then) {
    piece = std::min(piece, message.size());
    digest.update(message.first(piece));
    message = message.subspan(piece);
  }
  DataBuffer out;
  digest.finalize(out);
  return std::string(out.text());
}

std::string hmac(int id, ByteSpan key, ByteSpan data) {
  DataBuffer out;
  Hmac::hmac(data.data(), data.size(), key.data(), key.size(), id, out);
  return std::string(out.text());
}

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeader) return 0;
  const int id = data[0] % 14;
  const int bits = 2 * data[1];
  const int passes = data[1] % 8;
  const std::size_t first = data[2];
  const std::size_t then = 1U + data[3];
  const ByteSpan message(data + kHeader, size - kHeader);

  const std::string digest = whole(id, bits, passes, message);
  check(inPieces(id, bits, passes, message, first, then) == digest);
  const ByteSpan key = message.first(std::min(message.size(), first));
  const std::string code = hmac(id, key, message);
  check(code.size() == (Hash::hashLen(id) == 16 && id != kHashMd2 && id != kHashMd5
                            ? Hash::hashLen(kHashSha1)
                            : Hash::hashLen(id)));

  CpuFeatures limited;
  for (int level = 0; level < 2; ++level) {
    const ScopedCpuFeatures scope(limited);
    check(whole(id, bits, passes, message) == digest);
    check(hmac(id, key, message) == code);
    limited.avx2 = detectCpuFeatures().avx2;
  }
  return 0;
}

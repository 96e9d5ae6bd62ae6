// Every cipher with any setting: what was encrypted decrypts to the text and its padding, pieces of
// any size give the bytes of the whole, each path the same bytes, and decryption takes any noise.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/data_buffer.h"
#include "core/log_null.h"
#include "crypto/cipher_stream.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

struct Input {
  std::string_view rest;

  std::uint8_t byte() {
    if (rest.empty()) return 0;
    const char first = rest.front();
    rest.remove_prefix(1);
    return static_cast<std::uint8_t>(first);
  }
  std::string_view part(std::size_t size) {
    const std::string_view result = rest.substr(0, size);
    rest.remove_prefix(result.size());
    return result;
  }
};

struct Result {
  bool done = false;
  std::string bytes;
  bool operator==(const Result&) const = default;
};

// Pieces of `piece`, 2 * `piece`, 3 * `piece`, ... bytes.
Result run(const CipherSettings& settings, CipherDirection direction, std::string_view text,
           std::size_t piece) {
  LogNull log;
  CipherStream stream;
  DataBuffer out;
  Result result;
  if (!stream.begin(settings, direction, log)) return result;
  for (std::size_t size = piece; size < text.size(); size += piece) {
    if (!stream.update(asBytes(text.substr(0, size)), out, log)) return result;
    text.remove_prefix(size);
  }
  result.done = stream.finish(asBytes(text), out, log);
  require(!stream.started());
  if (result.done) result.bytes = out.text();
  return result;
}

void check(const CipherSettings& settings, std::string_view text, std::size_t piece) {
  const auto both = [&](CipherDirection direction, std::string_view input) {
    const Result whole = run(settings, direction, input, input.size() + 1);
    const bool random =
        direction == CipherDirection::encrypt &&
        (settings.padding == kPaddingRandomCounted || settings.padding == kPaddingRandom);
    const Result pieces = run(settings, direction, input, piece);
    require(pieces.done == whole.done && pieces.bytes.size() == whole.bytes.size());
    if (!random) require(pieces == whole);
    const ScopedCpuFeatures portable{CpuFeatures{}};
    if (!random) require(run(settings, direction, input, piece) == whole);
    return whole;
  };
  const Result encrypted = both(CipherDirection::encrypt, text);
  if (encrypted.done) {
    require(encrypted.bytes.size() >= text.size() && encrypted.bytes.size() <= text.size() + 16);
    const Result decrypted = both(CipherDirection::decrypt, encrypted.bytes);
    require(decrypted.done && decrypted.bytes.compare(0, text.size(), text) == 0);
    if (settings.padding == kPaddingCounted || settings.padding == kPaddingRandomCounted)
      require(decrypted.bytes.size() == text.size());
  }
  const Result noise = both(CipherDirection::decrypt, text);
  require(noise.bytes.size() <= text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{asText({data, std::min<std::size_t>(size, 4096)})};
  CipherSettings settings;
  settings.id = static_cast<CipherId>(input.byte() % 12);
  const std::uint8_t choices = input.byte();
  settings.ecb = (choices & 1) != 0;
  settings.padding = (choices >> 1) % 7 - 1;
  settings.keyLength = 4 * input.byte();
  settings.effectiveKeyBits = 5 * input.byte() - 20;
  const std::size_t piece = 1 + input.byte() % 64;
  settings.key = asBytes(input.part(input.byte() % 80));
  settings.iv = asBytes(input.part(input.byte() % 20));
  check(settings, input.rest, piece);
  return 0;
}

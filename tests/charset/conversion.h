#pragma once
// Short forms of conversions for the tests of this folder.

#include <cstddef>
#include <string>
#include <string_view>

#include "core/charset/encoding_convert.h"

namespace zantrel::test {

struct Converted {
  bool ok;
  std::string bytes;
  std::string error;
};

inline Converted convert(int from, int to, std::string_view in,
                         const ConvertOptions& options = {}) {
  EncodingConvert converter(options);
  DataBuffer out;
  const bool ok = converter.EncConvert(from, to, in.data(), in.size(), out);
  return {ok, std::string(out.text()), std::string(converter.errorText().view())};
}

struct Streamed {
  bool ok;
  std::string bytes;
  std::uint64_t invalid;
  std::uint64_t unmappable;
  std::uint64_t firstError;
};

/// Feeds pieces of `piece` bytes.
inline Streamed convertInPieces(int from, int to, std::string_view in, std::size_t piece,
                                const ConvertOptions& options = {}) {
  CharsetStream stream(from, to, options);
  DataBuffer out;
  bool ok = stream.valid();
  for (std::size_t i = 0; ok && i < in.size(); i += piece)
    ok = stream.feed(asBytes(in.substr(i, piece)), out);
  ok = ok && stream.finish(out);
  return {ok, std::string(out.text()), stream.invalidCount(), stream.unmappableCount(),
          stream.firstErrorOffset()};
}

}  // namespace zantrel::test

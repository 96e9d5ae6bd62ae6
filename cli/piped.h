#pragma once
// Work from one file or stream to another: in blocks where both can be opened as files, otherwise
// as long_streams.h does it.

#include <functional>

#include "console.h"
#include "long_streams.h"

namespace zantrel_cli {

using FileWork = std::function<bool(const std::string& in, const std::string& out)>;
using MemoryWork = std::function<bool(Zantrel::ByteView in, Zantrel::Bytes& out)>;

/// True when all is written; the works report their own failures.
inline bool runPiped(Streams& streams, const std::string& in, const std::string& out,
                     const FileWork& onFiles, const MemoryWork& inMemory) {
  const auto path = [](const std::string& name, auto standardPath) {
    return isStandardStream(name) ? standardPath() : std::optional<std::string>(name);
  };
  const auto inPath = path(in, standardInputPath);
  const auto outPath = path(out, standardOutputPath);
  if (inPath && outPath) return onFiles(*inPath, *outPath);
  return convertStreams(streams, in, out, {onFiles, inMemory});
}

}  // namespace zantrel_cli

#pragma once
// Conversions that the library does from file to file in blocks, on standard streams of any length.

#include <functional>
#include <string>

#include "session.h"

namespace zantrel_cli {

/// The two forms of a conversion. Each says itself why it failed.
struct Conversion {
  std::function<bool(const std::string& input, const std::string& output)> ofFiles;
  std::function<bool(const Zantrel::Bytes& input, Zantrel::Bytes& output)> ofBytes;
};

/// Converts from `input` to `output`, either of which may be a standard stream. Short standard
/// input is held in memory, longer one goes through a temporary file, and so does what a file
/// becomes on standard output: nothing comes out when the conversion fails.
bool convertStreams(Streams& streams, const std::string& input, const std::string& output,
                    const Conversion& conversion);

}  // namespace zantrel_cli

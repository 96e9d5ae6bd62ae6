#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

namespace zantrel_cli {

/// Reads a number of bytes with an optional K, M, G or T (powers of 1024) behind it; false for
/// anything else.
bool parseByteSize(const std::string& text, std::int64_t& bytes);

/// The option --max-size, a guard against small inputs made to become huge.
void addMaxSize(CLI::App& command, std::int64_t& bytes);

}  // namespace zantrel_cli
